#include "planning/eligibility.h"

#include <gtest/gtest.h>

#include "planning/device_mode.h"
#include "support/described.h"
#include "support/device_root.h"

namespace {

using Messages = std::vector<std::string>;

constexpr PackageVersion V7 = 0x07006600;
constexpr PackageVersion V8 = 0x08006600;
const std::string OF_6 = " =" + std::to_string(0x06006600) + ' ';
const std::string OF_8 = " =" + std::to_string(V8) + ' ';

struct EligibilityTest : testing::Test {
    EligibilityTest() { db.arch = "i386"; }

    /// The bits, with the messages left in `db`.
    InstallFlags check(const std::string& candidate, InstallFlags permitted = allowUpgrade,
                       const std::string& arch = "i386") {
        InstalledPackage package = described(candidate);
        package.arch = arch;
        return silently(db, [&] { return checkInstallEligibility(db, package, permitted); });
    }

    DeviceRoot device;
    PackageDb db;
};

TEST_F(EligibilityTest, ComparesWithTheInstalledPackage) {
    for (const char* installed : {"tools t1000", "branding", "firmware-x"}) addDescribed(db, installed);
    struct Case {
        std::string candidate;
        InstallFlags permitted, result;
        Messages messages;
    };
    const Messages newer = {"WARNING: omitting package tools-6.0: newer package tools-7.0 is already installed"};
    const Messages same = {"WARNING: omitting package tools-7.0: it is already installed"};
    for (const auto& [candidate, permitted, result, messages] :
         {Case{"other", 1, 0, {}}, Case{"tools t1" + OF_8, 1, EligibleNewer, {}},
          Case{"tools t1001", 1, EligibleNewer, {}}, Case{"tools" + OF_6, 1, EligibleOlder, newer},
          Case{"tools" + OF_6, 3, EligibleOlder, {}}, Case{"tools t1000", 3, EligibleSame, same},
          Case{"tools t1000", 33, EligibleSame, {}}, Case{"branding" + OF_6, 1, 0, {}},
          Case{"firmware-x" + OF_6, 1, 0, {}}}) {
        EXPECT_EQ(check(candidate, permitted), result) << candidate;
        EXPECT_EQ(db.messages, messages) << candidate;
    }
}

TEST_F(EligibilityTest, TellsTheFirstReasonThatIsNotWaived) {
    device.write("/sys/firmware/devicetree/base/min-kestrion-version", std::string("\x07\x02\x66\x00rest", 8));
    addDescribed(db, "guard !kestrion-x");
    addDescribed(db, "kestrion-x t1");
    const std::string candidate = "kestrion-x >one:" + std::to_string(V7) + " >two";
    const InstallFlags all = EligibleOlder | EligibleRefused | EligibleConflict;
    struct Case {
        const char* arch;
        InstallFlags permitted;
        Messages messages;
    };
    for (const auto& [arch, permitted, messages] :
         {Case{"mips",
               1,
               {"WARNING: omitting package kestrion-x-7.0: newer package kestrion-x-7.0 is already installed"}},
          Case{"mips", 3, {"ERROR: omitting package kestrion-x-7.0: min Kestrion version is 7.2"}},
          Case{"mips", 3 | 8, {"ERROR: can not install kestrion-x-7.0: it conflicts with guard-7.0"}},
          Case{"mips", 3 | 8 | 16, {}}}) {
        EXPECT_EQ(check(candidate, permitted, arch), all);
        EXPECT_EQ(db.messages, messages);
    }
    device.write("/sys/firmware/devicetree/base/min-kestrion-version", "cut");
    (void)check(candidate, 3, "mips");
    EXPECT_EQ(db.messages, Messages{"ERROR: can not install kestrion-x-7.0: it is not made for i386, but for mips"});
    (void)check(candidate, 3, "");
    EXPECT_EQ(db.messages,
              Messages{"ERROR: can not install kestrion-x-7.0: one-7.0 is not installed, but is required"});
    addDescribed(db, "one off");  // as good as an active one here
    (void)check(candidate, 3);
    EXPECT_EQ(db.messages, Messages{"ERROR: can not install kestrion-x-7.0: two is not installed, but is required"});
}

TEST_F(EligibilityTest, HoldsOnlyMainPackagesToTheMinimumVersion) {
    device.write("/sys/firmware/devicetree/base/min-kestrion-version", "\x07\x02\x66\x01");
    for (const char* name : {"system", "kestrion", "kestrion-x"}) EXPECT_EQ(check(name), EligibleRefused) << name;
    for (const char* name : {"systems", "kestrio"}) EXPECT_EQ(check(name), 0U) << name;
}

TEST_F(EligibilityTest, DeviceModeRefusesUnsafeMainPackages) {
    const std::string safe = "safe 1 " + std::to_string(V7) + " 1000 2000\n";
    struct Case {
        std::string mode, candidate;
        bool isRefused;
    };
    for (const auto& [mode, candidate, isRefused] :
         {Case{"", "system t5", false}, Case{safe, "system t1000", false}, Case{safe, "other t5", false},
          Case{safe, "system t2001", true}, Case{safe, "system t1000" + OF_8, true},
          Case{"safe 1 2 3 4\n" + safe, "system t2000" + OF_6, false}, Case{"safe 1 2 3 4\n", "system", true},
          Case{"any-version 1\nsafe 1 2 3 4\n", "system", false}, Case{"any-version 0\nsafe 0 x\n", "system", true},
          Case{"safe 0 -1 0 -1\n", "system", true}, Case{"odd 1\nsafely 1 2 3 4\n", "system", false}}) {
        device.write("/rw/device-mode", mode);
        EXPECT_EQ(check(candidate, ~0U), isRefused ? 24U : 0U) << mode;
        EXPECT_EQ(!db.messages.empty(), isRefused) << mode;
    }
    device.write("/rw/device-mode", "safe 1 2 3 4\n");
    (void)check("system", ~0U);
    EXPECT_EQ(db.messages, Messages{"ERROR: will not install package system-7.0, not allowed by device-mode"});
    device.write("/ram/SECURE", "");
    EXPECT_EQ(check("system", ~0U), 0U);
}

TEST_F(EligibilityTest, AFlaggedRouterTakesNoOlderBuilds) {
    device.install(package("tools").version(V7).buildTime(2000));
    device.write("/rw/device-mode", "flagged 1\n");
    const auto run = device.run({"-down", "-"}, package("tools").version(V8).buildTime(1999).bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), Lines{"WARNING: cannot install older tools-8.0: router in flagged state"});
    EXPECT_EQ(device.run({"-"}, package("tools").version(V8).buildTime(2000).bytes()).code, 0);
    EXPECT_EQ(flaggedState, 0);  // that of this process, read when it started
}

}  // namespace
