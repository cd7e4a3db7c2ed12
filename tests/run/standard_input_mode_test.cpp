#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

namespace fs = std::filesystem;

struct StandardInputTest : testing::Test {
    DeviceRoot device;
};

TEST_F(StandardInputTest, KeepsTheStreamWhereNothingElseDescribesThePackage) {
    struct Case {
        const char* what;
        PackageBuilder package;
        bool isKept;
    };
    for (const auto& [what, built, isKept] :
         {Case{"plain", package("a").file("f", "x"), false}, Case{"image", package("b").image("i"), true},
          Case{"no metadata", package("c").flags(PKG_FLAG_NO_METADATA).file("g", "x"), true},
          Case{"boot flag, no boot image", package("d").flags(PKG_FLAG_BOOT).file("h", "x"), false},
          Case{"unrecorded", package("e").unrecorded().file("k", "x"), false},
          Case{"bundle", bundle("f").member(package("g")), true}}) {
        EXPECT_EQ(device.run({"--safe", "-"}, built.bytes()).code, 0) << what;  // committed all the same
        EXPECT_FALSE(fs::exists("/flash/var/pdb/image")) << what;
        Tree tree = device.tree("/flash/var/pdb");
        const auto images =
            std::ranges::count_if(tree, [](const auto& entry) { return entry.first.ends_with("/image"); });
        EXPECT_EQ(images, isKept ? 1 : 0) << what;
        for (const auto& entry : fs::directory_iterator("/flash/var/pdb")) fs::remove(entry.path() / "image");
        EXPECT_EQ(device.read("/flash/PCKGS_CHANGED"), "") << what;
    }
}

TEST_F(StandardInputTest, MakesTheBootImage) {
    const auto core = package("core").flags(PKG_FLAG_BOOT).file("bin/x", "not unpacked");
    device.write("/flash/boot/kernel", "kernel");
    device.write("/sys/firmware/devicetree/base/compatible", std::string("other,board\0ombrelle,ampere\0", 28));
    device.install(core);
    EXPECT_EQ(device.read("/flash/bootimage"), core.bytes());
    EXPECT_EQ(device.tree("/flash/var/pdb/core").at("image"), "-> /flash/bootimage");
    EXPECT_EQ(device.read("/flash/bin/x"), "(none)");
    EXPECT_EQ(device.read("/flash/boot/kernel"), "kernel");
    // In place it is read to its end, and becomes the boot image again under --reinstall only.
    const auto again = PackageBuilder(core).ahead(99, "again");
    EXPECT_EQ(device.run({"--reinstall", "-"}, again.bytes()).code, 0);
    EXPECT_EQ(device.read("/flash/bootimage"), again.bytes());
}

TEST_F(StandardInputTest, CarriesOutRequestsBesideAFailedInstall) {
    device.install(package("a"));
    device.install(package("b").file("bin/b", "x"));
    device.write("/ram/pdb/a/schedule", "disable");
    auto run = device.run({"-"}, package("c").arch("mips").bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(),
              (Lines{"disabled a-7.0", "ERROR: can not install c-7.0: it is not made for i386, but for mips"}));
    EXPECT_EQ(device.read("/flash/var/pdb/a/disabled"), "user\n");
    EXPECT_EQ(device.read("/flash/postlog"),
              "disabled a-7.0\n"
              "ERROR: can not install c-7.0: it is not made for i386, but for mips\n");

    // Once the install has staged anything, all is cancelled.
    device.write("/ram/pdb/a/schedule", "enable");
    run = device.run({"-"}, package("b").version(0x08006600).badSignature().bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(device.read("/flash/var/pdb/a/disabled"), "user\n");
    EXPECT_EQ(device.read("/flash/bin/b"), "x");
    EXPECT_FALSE(fs::exists("/flash/var/pdb/image"));
    EXPECT_EQ(device.tree("/ram"), (Tree{{"pdb/a/schedule", "enable"}}));
}

TEST_F(StandardInputTest, NeedsItsSpoolFile) {
    device.install(package("a"));
    device.install(package("b"));
    device.write("/ram/pdb/a/schedule", "disable");
    fs::create_directory("/flash/var/pdb/image");
    const Tree before = device.tree("/flash");
    const auto run = device.run({"-q", "-"}, package("c").bytes());
    EXPECT_EQ(run.code, 255);
    EXPECT_EQ(run.out, "ERROR: could not open image\n");
    EXPECT_EQ(device.tree("/flash"), before);
}

TEST(StandardInput, DoesNotKeepAnImageThatIsNotWhole) {
    const DeviceRoot small(256);
    const auto run = small.run({"-"}, package("display").image(std::string(400000, 'i')).bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), Lines{"ERROR: could not write image"});
    EXPECT_EQ(small.tree("/flash"), (Tree{{"postlog", "ERROR: could not write image\n"}, {"var/pdb/", ""}}));
    EXPECT_EQ(small.tree("/ram"), Tree{});
}

}  // namespace
