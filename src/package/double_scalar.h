#pragma once

#include <array>
#include <cstddef>
#include <span>

/// A 256-bit number, little-endian.
using Scalar = std::array<std::byte, 32>;

/// The x coordinate of v P + h G on Curve25519 (RFC 7748), y^2 = x^3 + 486662 x^2 + x, as 32 bytes,
/// little-endian, below p; 0 for the point at infinity. G is the point of x = 9 and P that of x =
/// `publicKey`, each with its even y, that is with the y whose value in 0 to p - 1 is even. `publicKey` is
/// the x of a point of the curve; v and h are any numbers.
std::array<std::byte, 32> doubleScalarX(std::span<const std::byte, 32> publicKey, const Scalar& v, const Scalar& h);
