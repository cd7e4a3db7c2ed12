#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// An integer modulo p = 2^255 - 19, in ten signed limbs: the sum of limb i times 2^s(i), with
/// s = 0, 26, 51, 77, 102, 128, 153, 179, 204, 230. Even limbs are 26 bits wide, odd limbs 25.
///
/// A product is carried: each limb lies in its width, but for the top limb, which may be -1 or 2^25. Sums
/// and differences are formed limb by limb without carries, so at most three carried elements may be added
/// up before the next multiplication, which keeps its 64-bit sums from overflowing. Nothing here runs in
/// constant time: only public values pass through.
struct FieldElement {
    std::array<std::int32_t, 10> limbs{};
};

/// `value` is below 2^25.
constexpr FieldElement fieldFromSmall(std::int32_t value) { return {{value}}; }

/// From 32 bytes, little-endian. Bit 255 is not masked: the top limb takes all 26 bits that remain.
FieldElement fieldFromBytes(std::span<const std::byte, 32> bytes);

/// To 32 bytes, little-endian, in the range 0 to p - 1. The element has to be carried.
std::array<std::byte, 32> fieldPack(const FieldElement& a);

/// Whether a carried element that is not negative is p or more.
bool fieldIsOverflow(const FieldElement& a);

/// Whether the value in the range 0 to p - 1 is odd. The element has to be carried.
bool fieldIsOdd(const FieldElement& a);

FieldElement operator+(const FieldElement& a, const FieldElement& b);
FieldElement operator-(const FieldElement& a, const FieldElement& b);
FieldElement operator*(const FieldElement& a, const FieldElement& b);
FieldElement fieldSquare(const FieldElement& a);

/// `factor` is not negative. A factor of 1 only carries.
FieldElement fieldTimesSmall(const FieldElement& a, std::int32_t factor);

/// The powers of an element that the callers need, the element being carried.
enum class FieldPower {
    Reciprocal,  ///< a^(p-2); 0 for 0
    Root,        ///< a^((p-5)/8)
};
FieldElement fieldPow(const FieldElement& a, FieldPower power);
