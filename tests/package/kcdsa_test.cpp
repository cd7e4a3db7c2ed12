#include "package/kcdsa.h"

#include <gtest/gtest.h>

#include "package/block_hash.h"
#include "package/trusted_keys.h"
#include "platform/cipherkit.h"
#include "support/hex.h"
#include "support/package_builder.h"

namespace {

TEST(BlockHash, HashesOneBlock) {
    struct Case {
        std::string_view input, hash;
    };
    for (const auto& [input, hash] :
         {Case{"", "3b09ae833ee0bc350acc07dcd75f2d64a308b3850469091e51bfb73e08757bc3"},
          Case{"616263", "92bb10dc8907981fe5de5246f47ef14fff2cb8ce819a0ead6116229469e2b9e5"},
          Case{"000102030405060708090a0b0c0d0e0f10111213",
               "e82e0920eb8cce6e09bf283d87a45e5f070153736bfdfc108645c875593b64d4"},
          Case{"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
               "53318d1f5b925208580688380314b4f6c6fa4a702d84ddbbb9895f52f5a59e1e"},
          Case{"fffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff"
               "fffffffffffffffff",
               "e7bee37af79c670ed786b0cc2b6723d10a602377adc84273a69c48a4a06a106b"}})
        EXPECT_EQ(blockHash(fromHex(input)), arrayFromHex<32>(hash)) << input;
}

struct SignedDigest {
    std::string_view digest, r, v, ed25519;
    bool isAccepted;
};

// Signatures under the development keys, computed with plain integer arithmetic.
constexpr SignedDigest SIGNED[] = {
    {"a5772f173b78cd47078d3e3f16e7d46e43f0ba878d9f734697b7a1fb1700bd09", "fbc73b5965683ee828b38ba6a171f825",
     "bd83aa81d11e0a7257dd47df9ae22901d8e7f3fe7d13a7b1e43260f8e45dbd01",
     "831fed95b8c04dddb0fbf4421e81874f11f5a84b047b001cdb7f567a58c0ee9725e9f5f02874324c53447f03b5a4f680179d793"
     "5925d51d4539aab59e5ad3c0d",
     true},
    {"a43c9bd24f792152f6ffdb375910e128c823cffed4a3762337fb6920d442f404", "2c1c2b82e1b6890cd581cea289dde7f2",
     "3d905d9e5d2dd5a4878ebc4d0f304e0a869f56bb64c41a5cca03b3a025dec30b",
     "2098092ad5e70ee29dda5699f19db93c4c2618fb56857779ccfe67a204eed4fbdf8c20eadb6c4cbbbe1e594535e6a62b426ec75"
     "71a638231e24a9bfafdb6b00d",
     true},
    {"26c2bbb3f3c6dcb4fa57bac179f9c022b5b1e6c45e589fea8b04c963c25591ad", "082afdb5c95a2a292d52669ab2d33331",
     "1f6c2f646288e274aea3c9de60b72ea5bb3cde49fe5ab93e8616286c30d1bf0e",
     "724245621ef1c083e346fbaa3da923462a608de38a9e62911b6e275f36d90ff4a5349cc08b6010a97f7d7b51c0b8b78abcec734"
     "4336cc66899ea2b2a17a72307",
     true},
    {"2923f6fa36614586ea09b4424b438915cc1b9b67", "5b69bbb73e5187b65eaeebf3c7257627",
     "db034d0e04ecdfc22b165bb638e4eb05c298a143f93744a50474f36043cbea04", "", true},
    {"2923f6fa36614586ea09b4424b438915cc1b9b67", "5a69bbb73e5187b65eaeebf3c7257627",
     "db034d0e04ecdfc22b165bb638e4eb05c298a143f93744a50474f36043cbea04", "", false},
    {"2923f6fa36614586ea09b4424b438915cc1b9b67", "5b69bbb73e5187b65eaeebf3c7257627",
     "c8d7426b1e4ff21a02b3525917deca1ac298a143f93744a50474f36043cbea14", "", true},  // v plus the order
};

TEST(Kcdsa, AcceptsWhatTheKeySigned) {
    for (const auto& [digest, r, v, ed25519, isAccepted] : SIGNED)
        EXPECT_EQ(verifyKcdsa(kcdsaPublicKey, arrayFromHex<20>(digest.substr(0, 40)), arrayFromHex<16>(r),
                              arrayFromHex<32>(v)),
                  isAccepted)
            << digest;
}

TEST(Kcdsa, SignsWhatTheVerifierAccepts) {
    const KcdsaKey& key = developmentKeys().kcdsa;
    EXPECT_EQ(key.publicKey, kcdsaPublicKey);
    EXPECT_TRUE(key.isNegated);
    std::array<std::byte, 20> digest{};
    for (int i = 0; i < 20; ++i) {
        digest[7] = static_cast<std::byte>(i);
        const auto [r, v] = signKcdsa(key, digest);
        EXPECT_TRUE(verifyKcdsa(kcdsaPublicKey, digest, r, v)) << i;
        digest[19] ^= std::byte{0x80};
        EXPECT_FALSE(verifyKcdsa(kcdsaPublicKey, digest, r, v)) << i;
    }
    // Either sign of a private key has to work.
    bool signsSeen[2] = {};
    Scalar secret{};
    for (int i = 0; i < 8; ++i) {
        secret[1] = static_cast<std::byte>(i);
        const KcdsaKey other = kcdsaKeyFrom(secret);
        const auto [r, v] = signKcdsa(other, digest);
        EXPECT_TRUE(verifyKcdsa(other.publicKey, digest, r, v)) << i;
        signsSeen[other.isNegated ? 1 : 0] = true;
    }
    EXPECT_TRUE(signsSeen[0] && signsSeen[1]);
}

TEST(Ed25519, SignsAndVerifiesTheKnownSignatures) {
    EXPECT_EQ(developmentKeys().ed25519.publicKey, ed25519PublicKey);
    for (const auto& [digest, r, v, ed25519, isAccepted] : SIGNED) {
        if (ed25519.empty()) continue;
        auto signature = signEd25519(developmentKeys().ed25519, fromHex(digest));
        EXPECT_EQ(signature, arrayFromHex<64>(ed25519));
        EXPECT_TRUE(eddsa::verify(ed25519PublicKey, fromHex(digest), signature));
        signature[63] ^= std::byte{1};
        EXPECT_FALSE(eddsa::verify(ed25519PublicKey, fromHex(digest), signature));
    }
}

}  // namespace
