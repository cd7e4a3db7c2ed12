#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

const std::string USAGE = "usage: installer [-q] [-r <root>] [-]\n";
const std::string RESUMING = "\nResuming upgrade...\n";
const std::string TABLE =
    "            Name          Version                Built                                    Note\n"
    "----------------------------------------------------------------------------------------------\n";

struct CommandLineTest : testing::Test {
    DeviceRoot device;
};

TEST_F(CommandLineTest, ActsFromLeftToRight) {
    struct Case {
        Lines arguments;
        std::string out;
    };
    for (const auto& [arguments, out] :
         {Case{{"--what"}, USAGE}, Case{{""}, USAGE}, Case{{"-r"}, USAGE}, Case{{"-q", "--show", "-x"}, USAGE},
          Case{{"--reinstall", "--oops"}, RESUMING + USAGE}, Case{{"--show"}, TABLE},
          Case{{"-q", "--show", "-"}, TABLE},
          Case{{"-b", "--force", "--noupgrade", "-i", "-down", "--safe", "--show"}, TABLE},
          Case{{"-q", "--commit", "--show"}, "finishing install... \b \n"}}) {
        const auto run = device.run(arguments, "no package");
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(run.code, 0);
    }
    EXPECT_EQ(device.tree("/flash"), (Tree{{"var/pdb/", ""}}));
    EXPECT_EQ(device.run({"-", "--show"}, "no package").code, 1);  // what follows is not looked at
}

TEST_F(CommandLineTest, LeavesAnExcludedBoardAlone) {
    device.environment = {{"board", "qemu_p9"}};
    EXPECT_EQ(device.run({"--show"}).out + device.run({"--what"}).out, "");
    EXPECT_EQ(device.run({"--what"}).code, 0);
    device.environment = {{"board", "qemu_p90"}};
    EXPECT_EQ(device.run({"--show"}).out, TABLE);
}

TEST_F(CommandLineTest, EntersItsRoot) {
    device.write("/ram/root/flash/var/pdb/tools/version", "117466624 1000\n");
    device.write("/ram/root/flash/var/pdb/tools/files", "");
    EXPECT_NE(device.run({"-r", "/ram/root", "--show"}).out.find("tools"), std::string::npos);
    const auto run = device.run({"-r", "/nowhere", "--show"});
    EXPECT_EQ(run.err, "chroot: No such file or directory\n");
    EXPECT_EQ(run.out, TABLE);
    EXPECT_EQ(device.run({"-r", "/ram", "--show"}).out, "WARNING: could not open repo\n" + TABLE);
    EXPECT_EQ(device.run({"-r", "/ram", "-q", "--show"}).out, TABLE);
}

}  // namespace
