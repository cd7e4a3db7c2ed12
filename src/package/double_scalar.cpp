#include "package/double_scalar.h"

#include <cstdint>

#include "package/field25519.h"

namespace {

constexpr std::int32_t CURVE_A = 486662;
constexpr std::int32_t BASE_X = 9;

// The square of G's y: 9^3 + 486662 * 81 + 9.
constexpr FieldElement BASE_Y_SQUARED = {{39420360}};

// Twice the even y of G.
constexpr FieldElement TWICE_BASE_Y = {
    {0x262583b, 0x11d2ec0, 0x3937585, 0x192839, 0x36e1594, 0x16e5d66, 0x122d388, 0x52c7f8, 0x3c8ebef, 0xfa8f32}};

FieldElement carried(const FieldElement& a) { return fieldTimesSmall(a, 1); }

/// x^3 + 486662 x^2 + x, carried: the square of the y that belongs to x.
FieldElement curveAt(const FieldElement& x) {
    const FieldElement xSquared = fieldSquare(x);
    return carried(xSquared * x + fieldTimesSmall(xSquared, CURVE_A) + x);
}

/// A square root of u, of either sign. From p = 5 modulo 8: with t = 2u and w = t^((p-5)/8), t w^2 is a
/// square root of -1, and u w (t w^2 - 1) one of u.
FieldElement squareRoot(const FieldElement& u) {
    const FieldElement t = carried(u + u);
    const FieldElement w = fieldPow(t, FieldPower::Root);
    return u * w * (t * fieldSquare(w) - fieldFromSmall(1));
}

/// The x coordinates of P + G and of P - G. By the addition law, x(P +- G) is
/// (yP -+ yG)^2 / (xP - xG)^2 - A - xP - xG.
struct SumAndDifference {
    FieldElement sum;
    FieldElement difference;
};

SumAndDifference sumAndDifference(const FieldElement& px) {
    const FieldElement u = curveAt(px);
    const FieldElement py = squareRoot(u);
    const FieldElement squares = u + BASE_Y_SQUARED;
    const FieldElement twiceProduct = TWICE_BASE_Y * py;  // of G's even y with either y of P
    const FieldElement lower = carried(squares - twiceProduct);
    const FieldElement upper = carried(squares + twiceProduct);
    const bool odd = fieldIsOdd(py);
    const FieldElement divisor = fieldPow(fieldSquare(px - fieldFromSmall(BASE_X)), FieldPower::Reciprocal);
    const FieldElement rest = px + fieldFromSmall(CURVE_A + BASE_X);
    return {.sum = carried((odd ? upper : lower) * divisor - rest),
            .difference = carried((odd ? lower : upper) * divisor - rest)};
}

std::uint32_t bitAt(std::uint32_t word, int bit) { return word >> bit & 1; }

std::uint32_t octet(std::byte byte) { return std::to_integer<std::uint32_t>(byte); }

/// For each step of the ladder one bit: which of the two neighbours of the mixed point it came from.
struct Chain {
    Scalar link;
    std::uint32_t start;  ///< the bit above the top one: with which point the mixed one starts, P or G
};

Chain linkScalars(const Scalar& v, const Scalar& h) {
    Chain chain;
    std::uint32_t vi = 0;
    std::uint32_t hi = 0;
    std::uint32_t di = 0;
    std::uint32_t n = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        vi = vi >> 8 ^ octet(v[i]) ^ octet(v[i]) << 1;
        hi = hi >> 8 ^ octet(h[i]) ^ octet(h[i]) << 1;
        n = ~(vi ^ hi);
        di = (n & bitAt(di, 7)) ^ vi;
        for (int b = 0; b < 7; ++b) di ^= n & bitAt(di, b) << (b + 1);
        chain.link[i] = static_cast<std::byte>(di);
    }
    chain.start = ((n & bitAt(di, 7) << 8) ^ vi) >> 8 & 1;
    return chain;
}

/// A point by its projective x coordinate X/Z, for the next additions also as X + Z and X - Z.
struct LadderPoint {
    FieldElement x;
    FieldElement z;
    FieldElement sum{};
    FieldElement difference{};

    void formSums() {
        sum = x + z;
        difference = x - z;
    }

    /// Becomes the sum of two points, given by their sums and differences as of this step, whose
    /// difference has the affine x coordinate `gap`.
    void becomeSum(const LadderPoint& a, const LadderPoint& b, const FieldElement& gap) {
        const FieldElement left = a.difference * b.sum;
        const FieldElement right = a.sum * b.difference;
        x = fieldSquare(left + right);
        z = fieldSquare(left - right) * gap;
    }

    /// Becomes the double of a point; 121665 is (A - 2) / 4.
    void becomeDouble(const LadderPoint& a) {
        const FieldElement sumSquared = fieldSquare(a.sum);
        const FieldElement differenceSquared = fieldSquare(a.difference);
        const FieldElement w = sumSquared - differenceSquared;
        x = sumSquared * differenceSquared;
        z = (sumSquared + fieldTimesSmall(w, 121665)) * w;
    }
};

}  // namespace

std::array<std::byte, 32> doubleScalarX(std::span<const std::byte, 32> publicKey, const Scalar& v, const Scalar& h) {
    const FieldElement px = fieldFromBytes(publicKey);
    const auto [sum, difference] = sumAndDifference(px);
    const std::array<FieldElement, 2> single = {fieldFromSmall(BASE_X), px};
    const std::array<FieldElement, 2> both = {sum, difference};
    const auto [link, start] = linkScalars(v, h);

    // Of P and of G, point 0 holds an even multiple of each, point 2 the odd multiple of each that is next
    // to it, and point 1 an even one of the one and an odd one of the other.
    const FieldElement one = fieldFromSmall(1);
    std::array<LadderPoint, 3> points = {LadderPoint{.x = one, .z = {}}, LadderPoint{.x = single[start], .z = one},
                                         LadderPoint{.x = sum, .z = one}};
    std::uint32_t vi = 0;
    std::uint32_t hi = 0;
    std::uint32_t di = start;
    for (std::size_t i = v.size(); i-- > 0;) {
        vi = vi << 8 | octet(v[i]);
        hi = hi << 8 | octet(h[i]);
        di = di << 8 | octet(link[i]);
        for (int j = 7; j >= 0; --j) {
            for (LadderPoint& point : points) point.formSums();
            // The three new points read only the sums and differences formed above.
            points[0].becomeDouble(points[bitAt(vi ^ vi >> 1, j) + bitAt(hi ^ hi >> 1, j)]);
            const std::uint32_t own = bitAt(di, j);
            points[1].becomeSum(points[1], points[bitAt(di, j + 1) != own ? 2 : 0], single[own]);
            points[2].becomeSum(points[2], points[0], both[bitAt(vi ^ hi, j + 1)]);
        }
    }
    const LadderPoint& result = points[bitAt(octet(v[0]), 0) + bitAt(octet(h[0]), 0)];
    return fieldPack(result.x * fieldPow(result.z, FieldPower::Reciprocal));
}
