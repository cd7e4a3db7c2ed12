#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "package/double_scalar.h"

/// EC-KCDSA (ISO/IEC 14888-3) on Curve25519 over a 20-byte digest, with blockHash() for its hash. The
/// check value r is cut down to 16 bytes.
using KcdsaDigest = std::span<const std::byte, 20>;
using KcdsaCheckValue = std::span<const std::byte, 16>;

/// The multiple of the base point that the digest and r call for: 32 bytes that X25519 clamping leaves as
/// they are, the digest's hash with r folded in.
Scalar kcdsaChallenge(KcdsaDigest digest, KcdsaCheckValue r);

/// The check value that belongs to a point by its x coordinate.
std::array<std::byte, 16> kcdsaCheckValue(std::span<const std::byte, 32> x);

/// Whether (r, v) is a signature of `digest` under the key whose x coordinate is `publicKey`.
bool verifyKcdsa(std::span<const std::byte, 32> publicKey, KcdsaDigest digest, KcdsaCheckValue r, const Scalar& v);
