#include "package/package_signature.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

/// Whether the signature of a package of opaque bytes holds.
bool holds(const std::string& bytes, int level) {
    std::stringbuf source(bytes);
    PartReader reader(source, true, nullptr);
    reader.want({PART_SIGNATURE});
    reader.nextPart();
    return checkPackageSignature(reader, level);
}

TEST(SignatureLevel, DependsOnVersionNameAndPermit) {
    const DeviceRoot device;
    PackageInfo package("tools");
    for (const auto& [version, level] : {std::pair{0U, 1},
                                         {0x062E6608U, 1},
                                         {0x062E6609U, 2},
                                         {0x062EFFFFU, 2},
                                         {0x062F0000U, 1},
                                         {0x06306600U, 1},
                                         {0x06306601U, 2},
                                         {0x06FFFFFFU, 2},
                                         {0x07000000U, 1},
                                         {0x07016203U, 1},
                                         {0x07016204U, 2},
                                         {0xFFFFFFFFU, 2}}) {
        package.version = version;
        EXPECT_EQ(signatureLevel(package), level) << std::hex << version;
    }
    package.name = "branding";
    EXPECT_EQ(signatureLevel(package), 1);
    device.write("/ram/SECURE", "");
    EXPECT_EQ(signatureLevel(package), 2);
}

TEST(PackageSignature, HasAFormByItsSize) {
    struct Case {
        const char* what;
        PackageBuilder package;
        bool atLevel1, atLevel2;
    };
    const auto tools = package("tools").file("a", "content");
    for (const auto& [what, built, atLevel1, atLevel2] :
         {Case{"long", PackageBuilder(tools), true, true},
          Case{"bad", PackageBuilder(tools).badSignature(), false, false},
          Case{"bad Ed25519", PackageBuilder(tools).badEd25519(), true, false},
          Case{"short", PackageBuilder(tools).shortSignature(), true, false},
          Case{"bad short", PackageBuilder(tools).shortSignature().badSignature(), false, false},
          Case{"67 bytes", PackageBuilder(tools).signatureSize(67), false, false},
          Case{"131 bytes", PackageBuilder(tools).signatureSize(131), true, false},
          Case{"200 bytes", PackageBuilder(tools).signatureSize(200), true, true},
          Case{"SHA-1", PackageBuilder(tools).sha1(), true, false},
          Case{"late marker", PackageBuilder(tools).markerBehindHeader(), true, true}}) {
        EXPECT_EQ(holds(built.bytes(), 1), atLevel1) << what;
        EXPECT_EQ(holds(built.bytes(), 2), atLevel2) << what;
    }
}

TEST(PackageSignature, CoversEveryByteOfThePackage) {
    const std::string bytes = package("tools").note("n").depends("x").image("image").file("a", "content").bytes();
    const std::size_t header = 8 + 6;  // file header and marker are in no digest
    const std::size_t signature = bytes.size() - 132;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ 0x10);
        const bool isCovered = at >= header && at < signature;
        const bool isEd25519 = at >= signature + 68;
        if (isCovered || isEd25519) {
            EXPECT_FALSE(holds(changed, 2)) << at;
        }
        if (at > 3 && at < 8) {
            EXPECT_TRUE(holds(changed, 2)) << at;  // the length
        }
    }
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(holds(bytes.substr(0, length), 1)) << length;
}

TEST(PackageSignature, NeedsAHashingReader) {
    const std::string bytes = package("tools").bytes();
    std::stringbuf source(bytes);
    PartReader reader(source, false, nullptr);
    reader.want({PART_SIGNATURE});
    ASSERT_EQ(reader.nextPart(), PART_SIGNATURE);
    EXPECT_FALSE(checkPackageSignature(reader, 1));
}

}  // namespace
