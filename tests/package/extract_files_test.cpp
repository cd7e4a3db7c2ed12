#include <gtest/gtest.h>

#include "support/device_root.h"

namespace {

const Lines BROKEN = {"ERROR: installation of tools-7.0 failed: broken package"};

/// The files of an install, without the database and the marker of the run.
Tree files(const DeviceRoot& device) {
    Tree tree = device.tree("/flash");
    std::erase_if(tree, [](const auto& entry) {
        return entry.first.starts_with("var/pdb/") || entry.first == "postlog" || entry.first == "PCKGS_CHANGED";
    });
    return tree;
}

struct ExtractionTest : testing::Test {
    DeviceRoot device;
};

TEST_F(ExtractionTest, StagesRegularFilesOnly) {
    const std::string big(100000, 'b');
    device.install(package("tools")
                       .file("bin", "", 0040755)
                       .file("bin/ls", "list", 0100755)
                       .file("/etc//tools.conf", big, 0100600)
                       .file("link", "target", 0120777)
                       .rawFiles(fileRecord("skipped", std::string(5000, 's'), 0100644, 1))
                       .file("empty", "")
                       .file(std::string("cut\0off", 7), "up to the NUL")
                       .file("bin/ls", "again", 0100700));
    EXPECT_EQ(files(device),
              (Tree{{"bin/ls", "again"}, {"cut", "up to the NUL"}, {"empty", ""}, {"etc/tools.conf", big}}));
    EXPECT_EQ(device.mode("/flash/bin/ls"), 0700U);
    EXPECT_EQ(device.mode("/flash/etc/tools.conf"), 0600U);
    EXPECT_EQ(device.read("/flash/var/pdb/tools/files"),
              "flash/bin/ls\nflash/cut\nflash/empty\nflash/etc//tools.conf\n");
}

TEST_F(ExtractionTest, PutsTheFilesOfADisabledPackageAside) {
    device.install(package("guard").conflicts("tools"));
    const auto run = device.run({"-"}, package("tools").file("bin/ls", "list").bytes());
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(files(device), (Tree{{"x/tools/bin/ls", "list"}}));
    EXPECT_NE(run.out.find("installing  (disabled) tools-7.0 ["), std::string::npos);
}

TEST_F(ExtractionTest, RefusesNamesThatAreNoFileBelowItsTree) {
    for (const std::string_view name : {"../a", "a/../../b", "..", "a/..", "", "/", "//", "a/"}) {
        const auto run = device.run({"-"}, package("tools").file("first", "x").file(name, "x").bytes());
        EXPECT_EQ(run.code, 1) << name;
        EXPECT_EQ(run.lines(), BROKEN) << name;
        EXPECT_EQ(files(device), Tree{}) << name;
    }
    // A record that is not staged may have any name, and dots that climb nowhere are a name as well.
    device.install(package("tools").file("../", "", 0040755).file("..a/b..", "x").file("./c", "y"));
    EXPECT_EQ(files(device), (Tree{{"..a/b..", "x"}, {"c", "y"}}));
}

TEST_F(ExtractionTest, EndsInOrderOnlyBetweenRecords) {
    const std::string records = fileRecord("a", "first") + fileRecord("b", "second");
    const std::size_t second = fileRecord("a", "first").size();
    for (std::size_t length = 1; length < records.size(); ++length) {
        const bool isBroken = (length >= 30 && length < second) || length >= second + 30;
        const auto run = device.run({"-"}, package("tools")
                                               .buildTime(static_cast<unsigned>(length) + 1000)
                                               .rawFiles(records.substr(0, length))
                                               .bytes());
        EXPECT_EQ(run.code, isBroken ? 1 : 0) << length;
        EXPECT_EQ(run.lines(), isBroken ? BROKEN : Lines{}) << length;
    }
}

TEST(Extraction, LeavesDamageToTheSignature) {
    // Trailing bytes behind the zlib stream, no stream at all, and one that is damaged: signed as it is,
    // each is what the vendor meant.
    const std::string empty("\x78\x9C\x03\0\0\0\0\1", 8);
    for (const auto& payload : {std::string(), empty + std::string(9000, 'x'), std::string("\x78\x9C\xFF\xFF", 4)}) {
        const DeviceRoot fresh;
        EXPECT_EQ(fresh.run({"-"}, package("tools").ahead(PART_FILES, payload).bytes()).code, 0) << payload.size();
        EXPECT_EQ(files(fresh), Tree{});
    }
}

TEST(Extraction, ReportsAFullDisk) {
    const DeviceRoot small(256, 64);
    const std::string big(300000, 'b');
    const auto run = small.run({"-"}, package("tools").file("bin/big", big).bytes());
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.lines(), Lines{"ERROR: installation of tools-7.0 failed: disk is too small"});
    EXPECT_EQ(small.tree("/ram"), Tree{});
    EXPECT_EQ(files(small), Tree{});
}

}  // namespace
