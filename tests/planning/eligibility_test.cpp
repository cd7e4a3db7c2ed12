#include "planning/eligibility.h"

#include <gtest/gtest.h>

#include "planning/device_mode.h"
#include "support/device_root.h"

namespace {

using Messages = std::vector<std::string>;

struct EligibilityTest : testing::Test {
    void SetUp() override { db.arch = "i386"; }

    InstalledPackage& install(const char* name, PackageVersion version, std::uint32_t buildTime = 1000) {
        db.packages.push_back(std::make_unique<InstalledPackage>(name));
        db.packages.back()->version = version;
        db.packages.back()->buildTime = buildTime;
        return *db.packages.back();
    }

    static PackageInfo candidate(const char* name, PackageVersion version = V7,
                                 std::uint32_t buildTime = 1000) {
        PackageInfo package(name);
        package.version = version;
        package.buildTime = buildTime;
        package.arch = "i386";
        return package;
    }

    /// The bits, with the messages left in `db`.
    InstallFlags check(const PackageInfo& package, InstallFlags permitted = allowUpgrade) {
        db.messages.clear();
        testing::internal::CaptureStdout();
        const InstallFlags result = checkInstallEligibility(db, package, permitted);
        (void)testing::internal::GetCapturedStdout();
        return result;
    }

    static constexpr PackageVersion V6 = 0x06006600;
    static constexpr PackageVersion V7 = 0x07006600;
    static constexpr PackageVersion V8 = 0x08006600;

    DeviceRoot device;
    PackageDb db;
};

TEST_F(EligibilityTest, ComparesWithTheInstalledPackage) {
    install("tools", V7);
    install("branding", V7);
    install("firmware-x", V7);
    struct Case {
        PackageInfo package;
        InstallFlags permitted, result;
        Messages messages;
    };
    const Messages newer = {
        "WARNING: omitting package tools-6.0: newer package tools-7.0 is already installed"};
    const Messages same = {"WARNING: omitting package tools-7.0: it is already installed"};
    for (const auto& [package, permitted, result, messages] :
         {Case{candidate("other"), 1, 0, {}}, Case{candidate("tools", V8, 1), 1, EligibleNewer, {}},
          Case{candidate("tools", V7, 1001), 1, EligibleNewer, {}},
          Case{candidate("tools", V6), 1, EligibleOlder, newer},
          Case{candidate("tools", V6), 3, EligibleOlder, {}}, Case{candidate("tools"), 3, EligibleSame, same},
          Case{candidate("tools"), 33, EligibleSame, {}}, Case{candidate("branding", V6), 1, 0, {}},
          Case{candidate("firmware-x", V6), 1, 0, {}}}) {
        EXPECT_EQ(check(package, permitted), result) << nameVersion(package);
        EXPECT_EQ(db.messages, messages) << nameVersion(package);
    }
}

TEST_F(EligibilityTest, TellsTheFirstReasonThatIsNotWaived) {
    device.write("/sys/firmware/devicetree/base/min-kestrion-version", std::string("\x07\x02\x66\x00", 4));
    install("guard", V7).conflicts = {{.name = "kestrion-x"}};
    install("kestrion-x", V8);
    PackageInfo package = candidate("kestrion-x");
    package.arch = "mips";
    package.dependencies = {{.name = "one", .minVersion = V7}, {.name = "two"}};
    const InstallFlags all = EligibleOlder | EligibleRefused | EligibleConflict;

    EXPECT_EQ(check(package), all);
    EXPECT_EQ(
        db.messages,
        Messages{
            "WARNING: omitting package kestrion-x-7.0: newer package kestrion-x-8.0 is already installed"});
    EXPECT_EQ(check(package, 3), all);
    EXPECT_EQ(db.messages, Messages{"ERROR: omitting package kestrion-x-7.0: min Kestrion version is 7.2"});
    EXPECT_EQ(check(package, 3 | EligibleRefused), all);
    EXPECT_EQ(db.messages, Messages{"ERROR: can not install kestrion-x-7.0: it conflicts with guard-7.0"});
    EXPECT_EQ(check(package, ~0U), all);
    EXPECT_EQ(db.messages, Messages{});

    package.version = V8;
    EXPECT_EQ(check(package, 0x21), EligibleSame | EligibleRefused | EligibleConflict);
    EXPECT_EQ(db.messages,
              Messages{"ERROR: can not install kestrion-x-8.0: it is not made for i386, but for mips"});
    package.arch = "";
    (void)check(package, 0x21);
    EXPECT_EQ(db.messages,
              Messages{"ERROR: can not install kestrion-x-8.0: one-7.0 is not installed, but is required"});
    install("one", V7).disabled = true;  // as good as an active one here
    (void)check(package, 0x21);
    EXPECT_EQ(db.messages,
              Messages{"ERROR: can not install kestrion-x-8.0: two is not installed, but is required"});
}

TEST_F(EligibilityTest, HoldsOnlyMainPackagesToTheMinimumVersion) {
    device.write("/sys/firmware/devicetree/base/min-kestrion-version",
                 std::string("\x07\x02\x66\x00rest", 8));
    for (const auto& [name, result] : {std::pair{"system", EligibleRefused},
                                       {"kestrion", EligibleRefused},
                                       {"kestrion-x", EligibleRefused},
                                       {"systems", 0U},
                                       {"kestrio", 0U}})
        EXPECT_EQ(check(candidate(name)), result) << name;
    device.write("/sys/firmware/devicetree/base/min-kestrion-version", "\x07\x02");
    EXPECT_EQ(check(candidate("system")), 0U);
}

TEST_F(EligibilityTest, DeviceModeRefusesUnsafeMainPackages) {
    const std::string safe = "safe " + std::to_string(V6) + ' ' + std::to_string(V7) + " 1000 2000\n";
    const Messages refusal = {"ERROR: will not install package system-7.0, not allowed by device-mode"};
    struct Case {
        std::string mode;
        PackageInfo package;
        bool isRefused;
    };
    for (const auto& [mode, package, isRefused] :
         {Case{"", candidate("system"), false}, Case{safe, candidate("system"), false},
          Case{safe, candidate("other", V8), false}, Case{safe, candidate("system", V7, 2001), true},
          Case{"safe 1 2 3 4\n" + safe, candidate("system", V6, 2000), false},
          Case{"safe 1 2 3 4\n", candidate("system"), true},
          Case{"any-version 1\nsafe 1 2 3 4\n", candidate("system"), false},
          Case{"any-version 0\nsafe 0 x\n", candidate("system"), true},
          Case{"safe -1 -1 -1 -1\n", candidate("system"), true},
          Case{"odd 1\nsafely 1 2 3 4\n", candidate("system"), false}}) {
        device.write("/rw/device-mode", mode);
        EXPECT_EQ(check(package, ~0U), isRefused ? 24U : 0U) << mode;
        EXPECT_EQ(!db.messages.empty(), isRefused) << mode;
    }
    device.write("/rw/device-mode", "safe 1 2 3 4\n");
    (void)check(candidate("system"), ~0U);
    EXPECT_EQ(db.messages, refusal);
    device.write("/ram/SECURE", "");
    EXPECT_EQ(check(candidate("system"), ~0U), 0U);
}

TEST_F(EligibilityTest, AFlaggedRouterTakesNoOlderBuilds) {
    device.install(package("tools").version(V7).buildTime(2000));
    device.write("/rw/device-mode", "flagged 1\n");
    const Lines refusal = {"WARNING: cannot install older tools-8.0: router in flagged state"};
    auto run = device.run({"-down", "-"}, package("tools").version(V8).buildTime(1999).bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), refusal);
    EXPECT_EQ(device.run({"-"}, package("tools").version(V8).buildTime(2000).bytes()).code, 0);
    EXPECT_EQ(flaggedState, 0);  // that of this process, read when it started
}

}  // namespace
