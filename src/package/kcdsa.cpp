#include "package/kcdsa.h"

#include <algorithm>

#include "package/block_hash.h"

Scalar kcdsaChallenge(KcdsaDigest digest, KcdsaCheckValue r) {
    Scalar challenge = blockHash(digest);
    for (std::size_t i = 0; i < r.size(); ++i) challenge[8 + i] ^= r[i];
    challenge[0] &= std::byte{0xF8};
    challenge[31] &= std::byte{0x7F};
    challenge[31] |= std::byte{0x40};
    return challenge;
}

std::array<std::byte, 16> kcdsaCheckValue(std::span<const std::byte, 32> x) {
    const auto hash = blockHash(x);
    std::array<std::byte, 16> r;
    std::ranges::copy(std::span(hash).first<16>(), r.begin());
    return r;
}

bool verifyKcdsa(std::span<const std::byte, 32> publicKey, KcdsaDigest digest, KcdsaCheckValue r, const Scalar& v) {
    const auto x = doubleScalarX(publicKey, v, kcdsaChallenge(digest, r));
    return std::ranges::equal(kcdsaCheckValue(x), r);
}
