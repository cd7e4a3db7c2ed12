#include "package/field25519.h"

namespace {

constexpr std::size_t LIMBS = 10;

constexpr unsigned width(std::size_t limb) { return limb % 2 == 0 ? 26 : 25; }
constexpr std::int32_t mask(std::size_t limb) { return (1 << width(limb)) - 1; }

/// Carries sums of products. Twice around: what leaves the top comes back at the bottom times 19, as
/// 2^255 is 19 modulo p, and the second time the top keeps what reaches it.
FieldElement carry(std::array<std::int64_t, LIMBS> sums) {
    for (std::size_t i = 0; i < LIMBS; ++i) {
        const std::int64_t carried = sums[i] >> width(i);
        sums[i] &= mask(i);
        if (i + 1 < LIMBS)
            sums[i + 1] += carried;
        else
            sums[0] += carried * 19;
    }
    FieldElement result;
    for (std::size_t i = 0; i + 1 < LIMBS; ++i) {
        sums[i + 1] += sums[i] >> width(i);
        result.limbs[i] = static_cast<std::int32_t>(sums[i] & mask(i));
    }
    result.limbs[LIMBS - 1] = static_cast<std::int32_t>(sums[LIMBS - 1]);
    return result;
}

FieldElement squareTimes(FieldElement a, int times) {
    while (times-- > 0) a = fieldSquare(a);
    return a;
}

}  // namespace

FieldElement fieldFromBytes(std::span<const std::byte, 32> bytes) {
    FieldElement result;
    std::uint64_t bits = 0;
    unsigned held = 0;
    std::size_t limb = 0;
    for (const std::byte byte : bytes) {
        bits |= std::to_integer<std::uint64_t>(byte) << held;
        held += 8;
        if (limb + 1 < LIMBS && held >= width(limb)) {
            result.limbs[limb] = static_cast<std::int32_t>(bits) & mask(limb);
            bits >>= width(limb);
            held -= width(limb);
            ++limb;
        }
    }
    result.limbs[LIMBS - 1] = static_cast<std::int32_t>(bits);
    return result;
}

std::array<std::byte, 32> fieldPack(const FieldElement& a) {
    // To subtract p is to add 19 and to drop 2^255; to add p, the reverse.
    std::array<std::int32_t, LIMBS> limbs = a.limbs;
    if (fieldIsOverflow(a)) {
        limbs[0] += 19;
    } else if (limbs[LIMBS - 1] < 0) {
        limbs[0] -= 19;
    }
    for (std::size_t i = 0; i + 1 < LIMBS; ++i) {
        limbs[i + 1] += limbs[i] >> width(i);
        limbs[i] &= mask(i);
    }
    limbs[LIMBS - 1] &= mask(LIMBS - 1);

    std::array<std::byte, 32> bytes;
    std::uint64_t bits = 0;
    unsigned held = 0;
    std::size_t at = 0;
    for (std::size_t i = 0; i < LIMBS; ++i) {
        bits |= static_cast<std::uint64_t>(limbs[i]) << held;
        for (held += width(i); held >= 8; held -= 8, bits >>= 8) bytes[at++] = static_cast<std::byte>(bits);
    }
    bytes[at] = static_cast<std::byte>(bits);
    return bytes;
}

bool fieldIsOverflow(const FieldElement& a) {
    if (a.limbs[LIMBS - 1] > mask(LIMBS - 1)) return true;
    for (std::size_t i = 1; i < LIMBS; ++i)
        if (a.limbs[i] != mask(i)) return false;
    return a.limbs[0] > mask(0) - 19;
}

bool fieldIsOdd(const FieldElement& a) {
    const bool needsPrime = fieldIsOverflow(a) || a.limbs[LIMBS - 1] < 0;  // p, which is odd
    return needsPrime != ((a.limbs[0] & 1) != 0);
}

FieldElement operator+(const FieldElement& a, const FieldElement& b) {
    FieldElement sum;
    for (std::size_t i = 0; i < LIMBS; ++i) sum.limbs[i] = a.limbs[i] + b.limbs[i];
    return sum;
}

FieldElement operator-(const FieldElement& a, const FieldElement& b) {
    FieldElement difference;
    for (std::size_t i = 0; i < LIMBS; ++i) difference.limbs[i] = a.limbs[i] - b.limbs[i];
    return difference;
}

FieldElement operator*(const FieldElement& a, const FieldElement& b) {
    // Limbs i and j meet at limb i+j; behind the top they come back times 19. Two odd limbs weigh twice:
    // their exponents, each rounded up, add up to one more than that of limb i+j.
    std::array<std::int64_t, LIMBS> sums{};
    for (std::size_t i = 0; i < LIMBS; ++i) {
        const std::int64_t ai = a.limbs[i];
        const std::int64_t odd = i % 2 == 0 ? ai : 2 * ai;
        for (std::size_t j = 0; j < LIMBS; ++j) {
            const std::int64_t product = (j % 2 == 0 ? ai : odd) * b.limbs[j];
            if (i + j < LIMBS)
                sums[i + j] += product;
            else
                sums[i + j - LIMBS] += 19 * product;
        }
    }
    return carry(sums);
}

FieldElement fieldSquare(const FieldElement& a) { return a * a; }

FieldElement fieldTimesSmall(const FieldElement& a, std::int32_t factor) {
    std::array<std::int64_t, LIMBS> sums;
    for (std::size_t i = 0; i < LIMBS; ++i) sums[i] = std::int64_t(a.limbs[i]) * factor;
    return carry(sums);
}

FieldElement fieldPow(const FieldElement& a, FieldPower power) {
    // x(n) is a^(2^n - 1). Both exponents are a run of ones with a tail: p - 2 = (2^250 - 1) 2^5 + 11, and
    // (p - 5) / 8 = (2^250 - 1) 2^2 + 1.
    const FieldElement a2 = fieldSquare(a);
    const FieldElement a9 = squareTimes(a2, 2) * a;
    const FieldElement a11 = a9 * a2;
    const FieldElement x5 = fieldSquare(a11) * a9;
    const FieldElement x10 = squareTimes(x5, 5) * x5;
    const FieldElement x20 = squareTimes(x10, 10) * x10;
    const FieldElement x40 = squareTimes(x20, 20) * x20;
    const FieldElement x50 = squareTimes(x40, 10) * x10;
    const FieldElement x100 = squareTimes(x50, 50) * x50;
    const FieldElement x200 = squareTimes(x100, 100) * x100;
    const FieldElement x250 = squareTimes(x200, 50) * x50;
    return power == FieldPower::Root ? squareTimes(x250, 2) * a : squareTimes(x250, 5) * a11;
}
