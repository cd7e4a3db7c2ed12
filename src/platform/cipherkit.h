#pragma once

#include <array>
#include <cstddef>
#include <span>

#include <nettle/sha1.h>
#include <nettle/sha2.h>

/// Running SHA-1 (FIPS 180-4). Ready after construction and again after finish().
class SHA1 {
public:
    static constexpr std::size_t DIGEST_SIZE = SHA1_DIGEST_SIZE;

    SHA1();
    void update(std::span<const std::byte> bytes);

    /// Writes the digest of all bytes since construction or the last finish(), and starts a new message.
    void finish(std::span<std::byte, DIGEST_SIZE> digest);

private:
    sha1_ctx context_;
};

/// Running SHA-256 (FIPS 180-4), otherwise as SHA1.
class SHA256 {
public:
    static constexpr std::size_t DIGEST_SIZE = SHA256_DIGEST_SIZE;

    SHA256();
    void update(std::span<const std::byte> bytes);
    void finish(std::span<std::byte, DIGEST_SIZE> digest);

private:
    sha256_ctx context_;
};

namespace asn1 {
using blob = std::span<const std::byte>;
}

namespace eddsa {

/// Whether `signature` (64 bytes) is the Ed25519 signature (RFC 8032) of `message` under `key` (32 bytes).
/// False also for a key or signature of another length.
bool verify(asn1::blob key, asn1::blob message, asn1::blob signature);

}  // namespace eddsa
