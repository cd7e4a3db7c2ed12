#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "package/kcdsa.h"

/// An Ed25519 private key (RFC 8032) with its public half.
struct Ed25519Key {
    std::array<std::byte, 32> seed;
    std::array<std::byte, 32> publicKey;
};

/// An EC-KCDSA private key: an X25519 private key (RFC 7748), and whether the scalar that belongs to the
/// public point is its negative, so that this point has an even y.
struct KcdsaKey {
    Scalar privateKey;
    std::array<std::byte, 32> publicKey;  ///< the x coordinate
    bool isNegated;
};

struct SigningKeys {
    Ed25519Key ed25519;
    KcdsaKey kcdsa;
};

Ed25519Key ed25519KeyFrom(const std::array<std::byte, 32>& seed);
KcdsaKey kcdsaKeyFrom(const Scalar& privateKey);

/// The Ed25519 signature of a message.
std::array<std::byte, 64> signEd25519(const Ed25519Key& key, std::span<const std::byte> message);

struct KcdsaSignature {
    std::array<std::byte, 16> r;
    Scalar v;
};

/// The EC-KCDSA signature of a digest. Its nonce comes from the key and the digest, so that the same input
/// gives the same signature, and no two digests share a nonce.
KcdsaSignature signKcdsa(const KcdsaKey& key, KcdsaDigest digest);
