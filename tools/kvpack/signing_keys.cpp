#include "kvpack/signing_keys.h"

#include <gmpxx.h>
#include <nettle/curve25519.h>
#include <nettle/eddsa.h>
#include <nettle/hmac.h>

namespace {

const std::uint8_t* octets(std::span<const std::byte> bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

std::uint8_t* writableOctets(std::span<std::byte> bytes) { return reinterpret_cast<std::uint8_t*>(bytes.data()); }

/// Order of the group that the base point generates.
const mpz_class& groupOrder() {
    static const mpz_class order = (mpz_class(1) << 252) + mpz_class("27742317777372353535851937790883648493");
    return order;
}

mpz_class numberFrom(const Scalar& scalar) {
    mpz_class number;
    mpz_import(number.get_mpz_t(), scalar.size(), -1, 1, 0, 0, scalar.data());
    return number;
}

/// `number` is not negative and below the group order.
Scalar scalarFrom(const mpz_class& number) {
    Scalar scalar{};
    mpz_export(scalar.data(), nullptr, -1, 1, 0, 0, number.get_mpz_t());
    return scalar;
}

mpz_class reduced(const mpz_class& number) {
    mpz_class result;
    mpz_mod(result.get_mpz_t(), number.get_mpz_t(), groupOrder().get_mpz_t());
    return result;
}

mpz_class inverse(const mpz_class& number) {
    mpz_class result;
    mpz_invert(result.get_mpz_t(), number.get_mpz_t(), groupOrder().get_mpz_t());
    return result;
}

void clamp(Scalar& scalar) {
    scalar[0] &= std::byte{0xF8};
    scalar[31] &= std::byte{0x7F};
    scalar[31] |= std::byte{0x40};
}

std::array<std::byte, 32> xOfBaseMultiple(const Scalar& scalar) {
    std::array<std::byte, 32> x;
    curve25519_mul_g(writableOctets(x), octets(scalar));
    return x;
}

Scalar nonceFor(const KcdsaKey& key, KcdsaDigest digest) {
    hmac_sha256_ctx hmac;
    hmac_sha256_set_key(&hmac, key.privateKey.size(), octets(key.privateKey));
    hmac_sha256_update(&hmac, digest.size(), octets(digest));
    Scalar nonce;
    hmac_sha256_digest(&hmac, nonce.size(), writableOctets(nonce));
    clamp(nonce);
    return nonce;
}

}  // namespace

Ed25519Key ed25519KeyFrom(const std::array<std::byte, 32>& seed) {
    Ed25519Key key = {.seed = seed, .publicKey = {}};
    ed25519_sha512_public_key(writableOctets(key.publicKey), octets(key.seed));
    return key;
}

KcdsaKey kcdsaKeyFrom(const Scalar& privateKey) {
    KcdsaKey key = {.privateKey = privateKey, .publicKey = {}, .isNegated = false};
    clamp(key.privateKey);
    key.publicKey = xOfBaseMultiple(key.privateKey);
    // X25519 does not tell the sign of y. A signature with the wrong sign does.
    const std::array<std::byte, 20> digest{};
    const KcdsaSignature signature = signKcdsa(key, digest);
    key.isNegated = !verifyKcdsa(key.publicKey, digest, signature.r, signature.v);
    return key;
}

std::array<std::byte, 64> signEd25519(const Ed25519Key& key, std::span<const std::byte> message) {
    std::array<std::byte, 64> signature;
    ed25519_sha512_sign(octets(key.publicKey), octets(key.seed), message.size(), octets(message),
                        writableOctets(signature));
    return signature;
}

KcdsaSignature signKcdsa(const KcdsaKey& key, KcdsaDigest digest) {
    const Scalar nonce = nonceFor(key, digest);
    const auto r = kcdsaCheckValue(xOfBaseMultiple(nonce));
    const mpz_class k = numberFrom(nonce);
    const mpz_class h = numberFrom(kcdsaChallenge(digest, r));
    mpz_class s = numberFrom(key.privateKey);
    if (key.isNegated) s = -s;
    return {.r = r, .v = scalarFrom(reduced((k - h) * inverse(reduced(s))))};
}
