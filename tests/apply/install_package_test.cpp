#include <filesystem>

#include <gtest/gtest.h>
#include <sys/mount.h>

#include "support/device_root.h"

namespace {

constexpr PackageVersion V6 = 0x06006600;
constexpr PackageVersion V8 = 0x08006600;

struct InstallTest : testing::Test {
    DeviceRoot device;
};

TEST_F(InstallTest, LeavesFilesAndARecord) {
    device.install(package("needed"));
    device.install(package("tools")
                       .depends("needed", V6)
                       .provides("shell", -3, 1, 2)
                       .conflicts("other", 0, 9)
                       .file("bin/ls", "list", 0100755));
    EXPECT_EQ(device.tree("/flash/var/pdb/tools"), (Tree{{"version", "117466624 1000\n"},
                                                         {"deps", "needed 100689408 0\n"},
                                                         {"provides", "shell 1 2 -3\n"},
                                                         {"conflicts", "other 0 9\n"},
                                                         {"files", "flash/bin/ls\n"}}));
    EXPECT_EQ(device.mode("/flash/var/pdb/tools/version"), 0600U);
    EXPECT_EQ(device.read("/flash/bin/ls"), "list");
    EXPECT_EQ(device.read("/flash/PCKGS_CHANGED"), "");
    EXPECT_EQ(device.read("/flash/postlog"), "(none)");
    EXPECT_EQ(device.tree("/flash/var/pdb/needed"),
              (Tree{{"version", "117466624 1000\n"}, {"deps", ""}, {"files", ""}}));
}

TEST_F(InstallTest, ReplacesTheOldVersion) {
    device.install(package("tools").version(V6).provides("shell").file("bin/old", "old").file("bin/ls", "old"));
    device.install(package("tools").version(V8).file("bin/ls", "new"));
    EXPECT_EQ(device.tree("/flash/bin"), (Tree{{"ls", "new"}}));
    // A list that the new version has not is left over in its directory.
    EXPECT_EQ(device.tree("/flash/var/pdb/tools"), (Tree{{"version", "134243840 1000\n"},
                                                         {"deps", ""},
                                                         {"provides", "shell 0 0 0\n"},
                                                         {"files", "flash/bin/ls\n"}}));
    EXPECT_EQ(device.run({"-"}, package("tools").version(V6).bytes()).code, 1);
    EXPECT_EQ(device.run({"-down", "-"}, package("tools").version(V6).file("bin/ls", "older").bytes()).code, 0);
    EXPECT_EQ(device.tree("/flash/bin"), (Tree{{"ls", "older"}}));
}

TEST_F(InstallTest, FailsWithoutATrace) {
    device.install(package("tools").version(V6).file("bin/ls", "old"));
    const Tree before = device.tree("/flash");
    const auto update = package("tools").version(V8).file("bin/ls", "new");
    struct Case {
        const char* what;
        std::string bytes;
        Lines lines;
    };
    const Lines broken = {"ERROR: installation of tools-8.0 failed: broken package"};
    const std::string whole = update.bytes();
    for (const auto& [what, bytes, lines] :
         {Case{"bad signature", PackageBuilder(update).badSignature().bytes(), broken},
          Case{"EC-KCDSA at level 2", PackageBuilder(update).badEd25519().bytes(), broken},
          Case{"no signature", PackageBuilder(update).ahead(PART_IMAGE, "i").ahead(PART_IMAGE, "i").bytes(), broken},
          Case{"dependencies behind the signature",
               PackageBuilder(update).behind(PART_DEPENDENCIES, std::string(2, '\0')).bytes(), broken},
          Case{"image behind the signature", PackageBuilder(update).behind(PART_IMAGE, "").bytes(), broken},
          Case{"architecture twice",
               PackageBuilder(update).behind(PART_ARCHITECTURE, "").behind(PART_ARCHITECTURE, "").bytes(), broken},
          Case{"cut off in the signature", whole.substr(0, whole.size() - 1), broken},
          Case{"cut off in the files", whole.substr(0, whole.size() - 140), broken},
          Case{"cut off behind the header", whole.substr(0, 60), broken},
          Case{"cut off in the header", whole.substr(0, 40), {}}, Case{"empty", "", {}},
          Case{"no package", "0123456789", {}},
          Case{"other architecture",
               PackageBuilder(update).arch("mips").bytes(),
               {"ERROR: can not install tools-8.0: it is not made for i386, but for mips"}},
          Case{"unmet dependency",
               PackageBuilder(update).depends("x").bytes(),
               {"ERROR: can not install tools-8.0: x is not installed, but is required"}},
          Case{"name outside the database",
               package("..").bytes(),
               {"ERROR: installation of ..-7.0 failed: broken package"}},
          Case{"no name", package("").bytes(), {"ERROR: installation of -7.0 failed: broken package"}},
          Case{"path as a name",
               package("../../x").bytes(),
               {"ERROR: installation of ../../x-7.0 failed: broken package"}}}) {
        const auto run = device.run({"-"}, bytes);
        EXPECT_EQ(run.code, 1) << what;
        EXPECT_EQ(run.lines(), lines) << what;
        std::filesystem::remove("/flash/postlog");
        EXPECT_EQ(device.tree("/flash"), before) << what;
        EXPECT_EQ(device.tree("/ram"), Tree{}) << what;
    }
    // Empty parts behind the signature, and those that nobody reads, do no harm.
    EXPECT_EQ(device
                  .run({"-"}, PackageBuilder(update)
                                  .behind(PART_NOTE, "n")
                                  .behind(PART_ARCHITECTURE, "x")
                                  .behind(PART_DEPENDENCIES, "")
                                  .bytes())
                  .code,
              0);
}

TEST_F(InstallTest, InstallsAConflictDisabled) {
    device.install(package("guard").conflicts("tools", 0, V6));
    device.install(package("tools").version(V6).file("bin/ls", "list"));
    EXPECT_EQ(device.read("/flash/var/pdb/tools/disabled"), "auto\n");
    EXPECT_EQ(device.read("/flash/x/tools/bin/ls"), "list");
    // A newer version is in no conflict, and takes the files of the old one away.
    device.install(package("tools").version(V8).file("bin/ls", "new"));
    EXPECT_EQ(device.read("/flash/var/pdb/tools/disabled"), "(none)");
    EXPECT_EQ(device.read("/flash/x/tools/bin/ls"), "(none)");
    EXPECT_EQ(device.read("/flash/bin/ls"), "new");
}

TEST_F(InstallTest, LeavesTheInstalledVersionInPlace) {
    device.install(package("tools").file("bin/ls", "list"));
    const Tree before = device.tree("/flash");
    const std::string same = package("tools").file("bin/ls", "other").badSignature().bytes();
    auto run = device.run({"-"}, same);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.lines(), Lines{"WARNING: omitting package tools-7.0: it is already installed"});
    run = device.run({"--reinstall", "-"}, same);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.lines(), (Lines{"", "Resuming upgrade...", "installed tools-7.0"}));
    const std::string wipe = "\x1B[?25l\r" + std::string(78, ' ') + "\r\x1B[?25h";
    EXPECT_EQ(run.out, "\nResuming upgrade...\n" + wipe + wipe + "installed tools-7.0\n");
    std::filesystem::remove("/flash/postlog");
    EXPECT_EQ(device.tree("/flash"), before);
}

TEST_F(InstallTest, ReplacesAnImageInPlaceByAGoodOneOnly) {
    const auto display = package("display").image("the image").file("bin/x", "unused");
    device.install(display);
    EXPECT_EQ(device.read("/flash/var/pdb/display/image"), display.bytes());
    for (const char* option : {"-down", "--reinstall"}) {
        const std::string image = device.read("/flash/var/pdb/display/image");
        for (const auto& bad : {PackageBuilder(display).badSignature().bytes(), image.substr(0, image.size() - 1),
                                PackageBuilder(display).behind(PART_FILES, "").bytes()}) {
            const auto run = device.run({option, "-"}, bad);
            EXPECT_EQ(run.code, 1);
            EXPECT_EQ(run.lines().back(), "ERROR: installation of display-7.0 failed: broken package");
            EXPECT_EQ(device.read("/flash/var/pdb/display/image"), image);
        }
        const std::string again = PackageBuilder(display).ahead(99, option).bytes();
        EXPECT_EQ(device.run({option, "-"}, again).code, 0);
        EXPECT_EQ(device.read("/flash/var/pdb/display/image"), again);
    }
}

TEST_F(InstallTest, AnUnrecordedPackageLeavesOnlyItsFiles) {
    device.install(package("tools").version(V6).file("bin/old", "old"));
    device.install(package("tools").version(V8).unrecorded().file("bin/new", "new"));
    EXPECT_EQ(device.tree("/flash/bin"), (Tree{{"new", "new"}, {"old", "old"}}));
    EXPECT_EQ(device.read("/flash/var/pdb/tools/version"), "100689408 1000\n");
    EXPECT_EQ(device.tree("/flash/var/pdb").size(), 3U);
}

TEST_F(InstallTest, LeavesMarkers) {
    device.install(package("branding"));
    EXPECT_EQ(device.read("/flash/UPGRADED") + device.read("/flash/BRANDING_INSTALLED"), "");
    std::filesystem::remove("/flash/UPGRADED");
    std::filesystem::remove("/flash/BRANDING_INSTALLED");
    device.install(package("boot").flags(PKG_FLAG_BOOT));
    EXPECT_EQ(device.read("/flash/UPGRADED") + device.read("/flash/BRANDING_INSTALLED"), "(none)");

    EXPECT_EQ(device.run({"-"}, package("system").bytes()).code, 0);
    EXPECT_EQ(device.read("/rw/CONVERT"), "(none)");
    EXPECT_EQ(device.run({"-"}, package("system").version(V6).bytes()).code, 1);
    EXPECT_EQ(device.read("/rw/CONVERT"), "");  // as soon as it is seen
}

TEST_F(InstallTest, ClaimsItsDirectoryFromNobody) {
    device.install(package("other"));
    device.write("/flash/var/pdb/tools", "a plain file");
    const auto run = device.run({"-"}, package("tools").file("bin/ls", "list").bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), Lines{});
    EXPECT_EQ(device.read("/flash/var/pdb/tools"), "a plain file");
}

TEST_F(InstallTest, ReportsARecordThatCannotBeWritten) {
    // Without "/ram" and without room beside the target, a record has nowhere to go.
    device.write("/flash/filler", std::string(65536 * 1024 - 60000, 'f'));
    ASSERT_EQ(::umount("/ram"), 0);
    std::filesystem::remove("/ram");
    const auto run = device.run({"-"}, package("tools").bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), Lines{"ERROR: installation of tools-7.0 failed: could not create meta/version: No "
                                 "such file or directory"});
    EXPECT_EQ(device.tree("/flash/var/pdb"), Tree{});
}

}  // namespace
