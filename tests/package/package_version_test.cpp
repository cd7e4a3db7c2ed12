#include "package/package_version.h"

#include <gtest/gtest.h>

#include "kvpack/version_syntax.h"

namespace {

TEST(VersionText, NamesTheStage) {
    struct Case {
        PackageVersion version;
        std::string_view text;
    };
    for (const auto& [version, text] :
         {Case{0x062E6609, "6.46.9"}, Case{0x06306600, "6.48"}, Case{0x07016203, "7.1beta3"},
          Case{0x06306301, "6.48rc1"}, Case{0x06306100, "6.48alpha"},  // a number of 0 is left out
          Case{0x06300005, "6.48_ab5"},                                // below 'a': a development build
          Case{0x063060FF, "6.48_ab24831"}, Case{0xFFFF66FF, "255.255.255"}}) {
        EXPECT_EQ(versionText(version), text) << std::hex << version;
        EXPECT_EQ(parseVersion(text), version) << text;
    }
    // A stage without a name runs the numbers together, and build 0 reads like a final release.
    EXPECT_EQ(versionText(0x06306402), "6.482");
    EXPECT_EQ(versionText(0x00000000), "0.0");
    EXPECT_EQ(versionText(0x07000000), "7.0");
    EXPECT_EQ(parseVersion("7.0"), 0x07006600U);
}

TEST(VersionText, HasNoOtherWriting) {
    for (const std::string_view text :
         {"", "7", "7.", ".2", "7.2.", "7.2.0", "7.02", "7.2beta0", "7.2beta01", "7.256", "256.0", "7.2_ab",
          "7.2_ab24832", "7.2gamma1", "7.2beta1x", " 7.2", "7.2 ", "+7.2", "-7.2"})
        EXPECT_EQ(parseVersion(text), std::nullopt) << text;
}

}  // namespace
