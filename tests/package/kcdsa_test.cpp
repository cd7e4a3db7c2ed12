#include "package/kcdsa.h"

#include <gtest/gtest.h>

#include "package/block_hash.h"
#include "package/trusted_keys.h"
#include "platform/cipherkit.h"
#include "support/package_builder.h"
#include "support/vectors.h"

namespace {

TEST(BlockHash, HashesOneBlock) {
    const auto rows = vectors("block_hash");
    EXPECT_EQ(rows.size(), 5U);
    for (const auto& row : rows) EXPECT_EQ(blockHash(fromHex(row[0])), arrayFromHex<32>(row[1])) << row[0];
}

TEST(Kcdsa, AcceptsWhatTheKeySigned) {
    const auto rows = vectors("signatures");
    EXPECT_EQ(rows.size(), 6U);
    for (const auto& row : rows)
        EXPECT_EQ(
            verifyKcdsa(kcdsaPublicKey, arrayFromHex<20>(row[0]), arrayFromHex<16>(row[1]), arrayFromHex<32>(row[2])),
            row[3] == "yes")
            << row[0];
}

TEST(Kcdsa, SignsWhatTheVerifierAccepts) {
    EXPECT_EQ(developmentKeys().kcdsa.publicKey, kcdsaPublicKey);
    EXPECT_TRUE(developmentKeys().kcdsa.isNegated);
    // Either sign of a private key has to work.
    std::array<bool, 2> signsSeen{};
    std::array<std::byte, 20> digest{};
    for (int i = 0; i < 16; ++i) {
        Scalar secret{};
        secret[1] = digest[7] = static_cast<std::byte>(i);
        const KcdsaKey key = kcdsaKeyFrom(secret);
        const auto [r, v] = signKcdsa(key, digest);
        EXPECT_TRUE(verifyKcdsa(key.publicKey, digest, r, v)) << i;
        digest[19] ^= std::byte{0x80};
        EXPECT_FALSE(verifyKcdsa(key.publicKey, digest, r, v)) << i;
        signsSeen[key.isNegated ? 1 : 0] = true;
    }
    EXPECT_TRUE(signsSeen[0] && signsSeen[1]);
}

TEST(Ed25519, SignsAndVerifiesTheKnownSignatures) {
    EXPECT_EQ(developmentKeys().ed25519.publicKey, ed25519PublicKey);
    for (const auto& row : vectors("signatures")) {
        if (row[4] == "-") continue;
        auto signature = signEd25519(developmentKeys().ed25519, fromHex(row[0]));
        EXPECT_EQ(signature, arrayFromHex<64>(row[4]));
        EXPECT_TRUE(eddsa::verify(ed25519PublicKey, fromHex(row[0]), signature));
        signature[63] ^= std::byte{1};
        EXPECT_FALSE(eddsa::verify(ed25519PublicKey, fromHex(row[0]), signature));
    }
}

}  // namespace
