#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

constexpr PackageVersion V8 = 0x08006600;

struct BundleTest : testing::Test {
    /// Installs from standard input and tells the exit code.
    int install(const PackageBuilder& built, const char* option = "-q") const {
        return device.run({option, "-"}, built.bytes()).code;
    }

    DeviceRoot device;
};

TEST_F(BundleTest, InstallsItsMembersAndKeepsItsFile) {
    const auto suite = bundle("suite")
                           .note("two")
                           .image("opaque")
                           .disabledMember("beta")
                           .member(package("alpha").file("bin/alpha", "a"))
                           .member(package("beta").depends("alpha").sha1().file("bin/beta", "b"))
                           .behind(PART_ARCHITECTURE, "i386");
    const auto run = device.run({"-"}, suite.bytes());
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.lines(), Lines{});
    EXPECT_NE(run.out.find("installing suite-7.0 ["), std::string::npos);  // a member shows as its bundle
    EXPECT_EQ(device.tree("/flash/var/pdb/suite"), (Tree{{"image", suite.bytes()}}));
    EXPECT_EQ(
        device.tree("/flash/var/pdb/alpha"),
        (Tree{{"version", "117466624 1000\n"}, {"deps", ""}, {"bundle", "suite\n"}, {"files", "flash/bin/alpha\n"}}));
    EXPECT_EQ(device.read("/flash/var/pdb/beta/disabled"), "auto\n");
    EXPECT_EQ(device.read("/flash/x/beta/bin/beta"), "b");
    EXPECT_EQ(device.read("/flash/var/pdb/disabled"), "(none)");  // of what held beta back nothing is written
}

TEST_F(BundleTest, HasARecordOfItsOwnWithoutAnImage) {
    EXPECT_EQ(install(bundle("suite").member(package("alpha"))), 0);
    EXPECT_EQ(device.read("/flash/var/pdb/suite/version"), "117466624 1000\n");
    EXPECT_EQ(device.read("/flash/var/pdb/suite/deps"), "");
    EXPECT_EQ(device.read("/flash/var/pdb/suite/files"), "(none)");  // which makes it a bundle
}

TEST_F(BundleTest, TakesMembersAwayThatItNoLongerHolds) {
    device.install(package("other"));
    EXPECT_EQ(install(bundle("suite").member(package("alpha")).member(package("beta"))), 0);
    EXPECT_EQ(install(bundle("suite").version(V8).member(package("beta").version(V8))), 0);
    EXPECT_EQ(device.read("/flash/var/pdb/alpha/version"), "(none)");
    EXPECT_EQ(device.read("/flash/var/pdb/beta/version"), "134243840 1000\n");
    // An older member leaves the installed one in place, and that one counts.
    EXPECT_EQ(install(bundle("suite").version(V8 + 1).member(package("beta")).member(package("gamma"))), 0);
    EXPECT_EQ(device.read("/flash/var/pdb/beta/version"), "134243840 1000\n");
    EXPECT_EQ(device.read("/flash/var/pdb/gamma/bundle"), "suite\n");
}

TEST_F(BundleTest, FailsAsAWhole) {
    device.install(package("other"));
    EXPECT_EQ(install(bundle("old").version(V8).member(package("member"))), 0);
    const Tree before = device.tree("/flash");
    const auto alpha = package("alpha").file("bin/alpha", "a");
    struct Case {
        const char* what;
        PackageBuilder bundle;
        int code;
    };
    for (const auto& [what, built, code] :
         {Case{"dependencies of its own", bundle("suite").depends("other").member(alpha), 1},
          Case{"provides of its own", bundle("suite").provides("x").member(alpha), 1},
          Case{"conflicts of its own", bundle("suite").conflicts("x").member(alpha), 1},
          Case{"name outside the database", bundle("..").member(alpha), 1},
          Case{"older", bundle("old").member(alpha), 2},
          Case{"other architecture", bundle("suite").arch("mips").member(alpha), 2},
          Case{"bad member", bundle("suite").member(alpha).member(package("beta").badSignature()), 2},
          Case{"refused member", bundle("suite").member(alpha).member(package("beta").arch("mips")), 2},
          Case{"member of its own name", bundle("suite").member(alpha).member(package("suite")), 2},
          Case{"part behind the members", bundle("suite").member(alpha).behind(PART_CONFLICTS, ""), 2},
          Case{"part behind a member", bundle("suite").member(package("alpha").behind(PART_DEPENDENCIES, "")), 2},
          Case{"no member", bundle("suite"), 3},
          Case{"member list cut off", bundle("suite").ahead(PART_BUNDLE_MEMBERS, std::string("\2\0x", 3)).member(alpha),
               3}}) {
        EXPECT_EQ(install(built), code) << what;
        EXPECT_EQ(device.tree("/flash"), before) << what;
        EXPECT_EQ(device.tree("/ram"), Tree{}) << what;
    }
}

TEST_F(BundleTest, IsReinstalledOnRequestOnly) {
    const auto suite = bundle("suite").member(package("alpha"));
    EXPECT_EQ(install(suite), 0);
    const auto run = device.run({"-"}, suite.bytes());
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.lines(), Lines{"WARNING: omitting package suite-7.0: it is already installed"});
    EXPECT_EQ(install(suite, "--reinstall"), 0);
}

TEST_F(BundleTest, BootsFromItsMembersImage) {
    device.environment = {{"bootimage", ""}};
    const auto suite =
        bundle("suite").member(package("alpha")).member(package("core").flags(PKG_FLAG_BOOT).file("a", "b"));
    EXPECT_EQ(install(suite), 0);
    EXPECT_EQ(device.read("/flash/bootimage"), suite.bytes());
    EXPECT_EQ(device.tree("/flash/var/pdb/suite").at("image"), "-> /flash/bootimage");
    EXPECT_EQ(device.read("/flash/a"), "(none)");
}

}  // namespace
