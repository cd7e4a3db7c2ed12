#include <algorithm>
#include <filesystem>

#include <sys/mount.h>

#include "support/real_disks.h"

namespace {

namespace fs = std::filesystem;

constexpr PackageVersion V6 = 0x06006600;
constexpr PackageVersion V8 = 0x08006600;
const std::string DOWNLOAD = "/rw/pckg/.download/";
const std::string FLASH = "/flash/var/pckg/";

/// The marker and the log of a run, which are no part of what it installs.
void forget() {
    fs::remove("/flash/postlog");
    fs::remove("/flash/PCKGS_CHANGED");
}

struct ScheduledDiskTest : RealDiskTest {
    void SetUp() override {
        RealDiskTest::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) device.install(package("base").file("bin/base", "1"));
    }

    void offer(const std::string& directory, const PackageBuilder& built, const std::string& name = "") const {
        static int count = 0;
        device.write(directory + (name.empty() ? std::to_string(++count) + ".kvp" : name), built.bytes());
    }
};

TEST_F(ScheduledDiskTest, InstallsADownloadFromStartToHandOver) {
    offer(DOWNLOAD, package("app").depends("lib").file("bin/app", "app"));
    offer(DOWNLOAD, package("lib").file("lib/lib", "lib"));
    offer(DOWNLOAD, package("display").image("image"), "display.kvp");
    offer(DOWNLOAD, bundle("suite").member(package("m").conflicts("base")));
    offer(DOWNLOAD, package("spent").flags(PKG_FLAG_DISCARD), "spent.kvp");
    const std::string display = device.read(DOWNLOAD + "display.kvp");
    device.write("/flash/postlog", "earlier\n");
    const auto run = device.run({});
    EXPECT_EQ(run.code, 0);
    Lines lines = run.lines();
    std::ranges::sort(lines);  // packages without a relation come in the order of the directory
    EXPECT_EQ(lines, (Lines{"installed app-7.0", "installed display-7.0", "installed lib-7.0", "installed suite-7.0"}));
    EXPECT_LT(run.out.find("installed lib-7.0"), run.out.find("installed app-7.0"));
    EXPECT_EQ(device.read("/flash/bin/app") + device.read("/flash/lib/lib"), "applib");
    EXPECT_EQ(device.read("/flash/var/pdb/display/image"), display);
    EXPECT_FALSE(fs::exists(DOWNLOAD + "spent.kvp"));
    EXPECT_EQ(device.tree("/rw/pckg/.download").size(), 4U);  // on another disk than flash they stay
    EXPECT_EQ(device.read("/flash/var/pdb/base/disabled"), "auto\n");
    EXPECT_EQ(device.read("/rw/vorn-calls"), "/: vorn /flash/boot\n");
    EXPECT_EQ(device.read("/flash/PCKGS_CHANGED"), "");
    EXPECT_EQ(device.read("/flash/postlog").substr(0, 8), "earlier\n");
    EXPECT_EQ(device.tree("/ram"), Tree{});
}

TEST_F(ScheduledDiskTest, OneFailureLeavesTheDeviceAsItWas) {
    device.install(bundle("suite").member(package("alpha").file("bin/alpha", "a")));
    fs::create_directories("/flash/var/pdb/unwritable");
    ASSERT_EQ(::mount("tmpfs", "/flash/var/pdb/unwritable", "tmpfs", 0, "size=4k"), 0);
    device.write("/flash/var/pdb/unwritable/filler", std::string(4096, 'f'));
    const auto bad = package("bad").file("bin/bad", std::string(5000, 'b'));
    std::string cut = bad.bytes();
    cut.resize(cut.size() - 150);
    cut[4] = static_cast<char>(cut.size() - 8);  // the length, below 64 KiB
    cut[5] = static_cast<char>((cut.size() - 8) >> 8);
    const std::string unwritable = "ERROR: installation of unwritable-7.0 failed: could not create meta/version: ";
    struct Case {
        const char* what;
        std::string bytes;
        int code;
        std::string lastLine;
    };
    const Case cases[] = {
        {"refused", package("base").version(V6).bytes(), 0,
         "WARNING: omitting package base-6.0: newer package base-7.0 is already installed"},
        {"unmet dependency", package("bad").depends("x").bytes(), 0,
         "ERROR: can not install bad-7.0: x is not installed, but is required"},
        {"cut payload", cut, 0, "ERROR: installation of bad-7.0 failed: broken package"},
        {"bad signature", PackageBuilder(bad).badSignature().bytes(), 0,
         "ERROR: installation of bad-7.0 failed: broken package"},
        {"bad member", bundle("bad").member(package("x").badSignature()).bytes(), 0,
         "ERROR: installation of bad-7.0 failed: broken package"},
        {"missing package", bundle("suite").version(V8).member(package("beta")).bytes(), 0,
         "ERROR: missing package alpha"},
        {"no room on the kernel disk", package("bad").file("boot/kernel", std::string(5000000, 'k')).bytes(), 28,
         "ERROR: upgrade failed, free  kB of kernel disk space"},
        {"no room on the disk", package("bad").file("big", std::string(5000000, 'b')).bytes(), 28,
         "ERROR: upgrade failed, free  kB of disk space"},
        {"unwritable record", package("unwritable").bytes(), 0, unwritable + "No such file or directory"}};
    for (const Case& c : cases) {
        fs::remove_all(FLASH);
        offer(FLASH, package("good1").file("bin/good1", "1"));
        device.write(FLASH + "bad.kvp", c.bytes);
        offer(FLASH, package("good2").file("bin/good2", "2").image("image"));
        forget();
        if (&c == std::end(cases) - 1) {  // the staged record finds no other place then
            ASSERT_EQ(::umount("/ram"), 0);
            fs::remove("/ram");
        }
        const Tree before = device.exactTree("/flash");
        const auto run = device.run({});
        EXPECT_EQ(run.code, c.code) << c.what;
        std::string log = device.read("/flash/postlog");
        if (c.code == 28)  // how much is missing hangs on the file system
            std::erase_if(log, [](char letter) { return letter >= '0' && letter <= '9'; });
        EXPECT_TRUE(log.ends_with(c.lastLine + '\n')) << c.what << ": " << log;
        forget();
        EXPECT_EQ(device.exactTree("/flash"), before) << c.what;
        EXPECT_TRUE(!fs::exists("/ram") || fs::is_empty("/ram")) << c.what;
        EXPECT_EQ(device.read("/rw/vorn-calls"), "(none)") << c.what;
    }
}

TEST_F(ScheduledDiskTest, AFileThatCannotBeReadConcernsItselfOnly) {
    offer(FLASH, package("good").file("bin/good", "1"));
    fs::create_directories(FLASH + "directory.kvp");
    EXPECT_EQ(device.run({}).lines(), (Lines{"ERROR: broken package directory.kvp", "installed good-7.0"}));
}

TEST_F(ScheduledDiskTest, SafeRunsLeaveTheRestToALaterOne) {
    offer(DOWNLOAD, package("base").version(V8).file("bin/base", "2").file("bin/new", "n"));
    offer(DOWNLOAD, package("display").image("image"), "a b.kvp");
    const std::string display = device.read(DOWNLOAD + "a b.kvp");
    const Tree before = device.tree("/flash/bin");
    ASSERT_EQ(device.run({"--safe"}).code, 0);
    EXPECT_EQ(device.read("/flash/bin/base"), "1");
    EXPECT_EQ(device.read("/rw/vorn-calls"), "(none)");
    EXPECT_NE(device.read("/ram/MANIFEST").find("M /flash/var/pdb/display/image /rw/pckg/.download/a b.kvp\n"),
              std::string::npos);
    EXPECT_EQ(device.run({"--cancel"}).code, 0);
    EXPECT_FALSE(fs::exists("/ram/MANIFEST"));
    for (const auto& [name, content] : device.tree("/flash/bin"))  // no manifest tells who they belong to
        if (name.starts_with("tmp")) fs::remove("/flash/bin/" + name);
    EXPECT_EQ(device.tree("/flash/bin"), before);

    ASSERT_EQ(device.run({"--safe"}).code, 0);
    EXPECT_EQ(device.run({"--commit"}).code, 0);
    EXPECT_EQ(device.tree("/flash/bin"), (Tree{{"base", "2"}, {"new", "n"}}));
    EXPECT_EQ(device.read("/flash/var/pdb/display/image"), display);
    EXPECT_EQ(device.read("/rw/vorn-calls"), "(none)");
}

TEST_F(ScheduledDiskTest, SearchesTheDirectoriesInOrder) {
    const std::vector<std::pair<std::string, std::string>> places = {
        {"/rw/pckg/.download_firmware/", "a"}, {DOWNLOAD, "b"}, {"/flash/rw/pckg/", "c"}, {FLASH, "d"}};
    struct Case {
        std::string filled;  // the places that have a package, by its name
        bool ignoresDownload;
        std::string taken;
        bool keepsPermit;
    };
    for (const auto& [filled, ignoresDownload, taken, keepsPermit] :
         {Case{"abcd", false, "ab", true}, Case{"acd", false, "a", true}, Case{"bcd", false, "b", true},
          Case{"cd", false, "c", false}, Case{"d", false, "d", false}, Case{"abcd", true, "ac", false},
          Case{"abd", true, "a", false}, Case{"bd", true, "d", false}, Case{"", false, "", false}}) {
        device.write("/ram/SECURE", "");
        for (const auto& [directory, name] : places) {
            fs::remove_all(directory);
            if (filled.find(name) != std::string::npos)
                offer(directory, package(name).flags(PKG_FLAG_DISCARD), name + ".kvp");
        }
        if (ignoresDownload) device.write(DOWNLOAD + "IGNORE", "");
        EXPECT_EQ(device.run({}).code, 0);
        for (const auto& [directory, name] : places) {
            const bool isLeft = filled.find(name) != std::string::npos && taken.find(name) == std::string::npos;
            EXPECT_EQ(fs::exists(directory + name + ".kvp"), isLeft) << filled << ' ' << name;
        }
        EXPECT_EQ(fs::exists("/ram/SECURE"), keepsPermit) << filled;
    }
    EXPECT_EQ(device.read("/rw/vorn-calls"), "(none)") << "nothing was staged";
}

TEST_F(ScheduledDiskTest, KeepsTheStatesThatUsersChose) {
    device.install(package("off").file("bin/off", "1"));
    device.install(package("ipv6"));
    device.install(package("needed").conflicts("nothing"));
    device.write("/ram/pdb/off/schedule", "disable");
    device.write("/ram/pdb/ipv6/schedule", "disable");
    device.write("/ram/pdb/needed/schedule", "uninstall");
    Lines lines = device.run({}).lines();  // nothing is said of a removal
    std::ranges::sort(lines);
    EXPECT_EQ(lines, (Lines{"disabled ipv6-7.0", "disabled off-7.0"}));
    EXPECT_EQ(device.read("/rw/vorn-calls"), "/: vorn /flash/boot\n");
    EXPECT_FALSE(fs::exists("/flash/var/pdb/needed"));

    fs::remove_all("/ram/pdb");
    device.write("/ram/ipv6", "");
    offer(DOWNLOAD, package("off").version(V8).file("bin/off", "2"));
    EXPECT_EQ(device.run({}).lines(), Lines{"installed off-8.0"});
    EXPECT_EQ(device.read("/flash/var/pdb/off/disabled"), "user\n");
    EXPECT_EQ(device.read("/flash/x/off/bin/off"), "2");
    EXPECT_EQ(device.read("/flash/var/pdb/ipv6/disabled") + device.read("/flash/var/pdb/ipv6/enabled"), "(none)user\n");
}

TEST_F(ScheduledDiskTest, BringsBackWhatIsNeededAgain) {
    device.install(package("lib").provides("api"));
    device.write("/flash/var/pdb/lib/disabled", "auto\n");
    device.install(bundle("suite").member(package("other").provides("api")).member(package("kept")));
    // The new bundle takes "other" away, and "api" was in use. A download may let the name "other" go.
    offer(DOWNLOAD, bundle("suite").version(V8).member(package("kept").version(V8)));
    EXPECT_EQ(device.run({}).lines(), (Lines{"enabled lib-7.0", "installed suite-8.0"}));
    EXPECT_FALSE(fs::exists("/flash/var/pdb/lib/disabled"));
    EXPECT_FALSE(fs::exists("/flash/var/pdb/other"));
}

TEST_F(ScheduledDiskTest, GoesDownOnRequestOnly) {
    offer(DOWNLOAD, package("base").version(V6).file("bin/base", "0"));
    EXPECT_EQ(device.run({}).lines(),
              Lines{"WARNING: omitting package base-6.0: newer package base-7.0 is already installed"});
    device.write("/ram/DOWNGRADE", std::to_string(V6 + 1));
    EXPECT_EQ(device.run({}).lines(), Lines{"WARNING: ommitting package base-6.0: not allowed"});
    device.write("/ram/DOWNGRADE", "");
    EXPECT_EQ(device.run({}).lines(), Lines{"installed base-6.0"});
    EXPECT_EQ(device.read("/flash/bin/base"), "0");
}

TEST_F(ScheduledDiskTest, MakesTheBootImage) {
    device.environment = {{"bootimage", "1"}};
    device.write("/flash/boot/kernel", "kernel");
    offer(DOWNLOAD, package("core").flags(PKG_FLAG_BOOT).image("image").file("bin/core", "x"), "core.kvp");
    const std::string core = device.read(DOWNLOAD + "core.kvp");
    EXPECT_EQ(device.run({}).lines(), Lines{"installed core-7.0"});
    EXPECT_EQ(device.read("/flash/bootimage"), core);
    EXPECT_EQ(device.tree("/flash/var/pdb/core"), (Tree{{"image", "-> /flash/bootimage"}}));
    EXPECT_FALSE(fs::exists("/flash/boot/kernel"));
    EXPECT_FALSE(fs::exists("/flash/bin/core"));
}

TEST_F(ScheduledDiskTest, NeedsAPackageInTheEnd) {
    fs::remove_all("/flash/var/pdb/base");
    EXPECT_EQ(device.run({}).lines(), Lines{"ERROR: router installation failed!!!"});
    EXPECT_EQ(device.read("/flash/postlog"), "ERROR: router installation failed!!!\n");
}

TEST_F(ScheduledDiskTest, ReinstallSkipsTheCheckOfTheDisk) {
    offer(DOWNLOAD, package("base").file("bin/base", "other"));
    leaveFree("/flash", 10);
    const auto run = device.run({"--reinstall"});
    EXPECT_EQ(run.lines(), (Lines{"", "Resuming upgrade...", "installed base-7.0", "installed base-7.0"}));
    EXPECT_EQ(device.read("/flash/bin/base"), "1");
    EXPECT_EQ(device.read("/rw/vorn-calls"), "(none)");
}

}  // namespace
