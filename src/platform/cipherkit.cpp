#include "platform/cipherkit.h"

#include <cstdint>

#include <nettle/eddsa.h>

namespace {

// Nettle speaks of bytes as uint8_t.
const std::uint8_t* octets(const std::byte* bytes) { return reinterpret_cast<const std::uint8_t*>(bytes); }
std::uint8_t* octets(std::byte* bytes) { return reinterpret_cast<std::uint8_t*>(bytes); }

}  // namespace

SHA1::SHA1() { sha1_init(&context_); }

void SHA1::update(std::span<const std::byte> bytes) { sha1_update(&context_, bytes.size(), octets(bytes.data())); }

void SHA1::finish(std::span<std::byte, DIGEST_SIZE> digest) {
    sha1_digest(&context_, DIGEST_SIZE, octets(digest.data()));
}

SHA256::SHA256() { sha256_init(&context_); }

void SHA256::update(std::span<const std::byte> bytes) { sha256_update(&context_, bytes.size(), octets(bytes.data())); }

void SHA256::finish(std::span<std::byte, DIGEST_SIZE> digest) {
    sha256_digest(&context_, DIGEST_SIZE, octets(digest.data()));
}

bool eddsa::verify(asn1::blob key, asn1::blob message, asn1::blob signature) {
    if (key.size() != ED25519_KEY_SIZE || signature.size() != ED25519_SIGNATURE_SIZE) return false;
    return ed25519_sha512_verify(octets(key.data()), message.size(), octets(message.data()),
                                 octets(signature.data())) != 0;
}
