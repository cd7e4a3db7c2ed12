#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "apply/change_journal.h"
#include "support/device_root.h"

namespace {

namespace fs = std::filesystem;

struct CommitTest : testing::Test {
    DeviceRoot device;
    ChangeJournal journal;
};

TEST_F(CommitTest, DeletesFilesAndOneLevelOfDirectories) {
    for (const char* path : {"/flash/f/file", "/flash/f/dir/a", "/flash/f/deep/a", "/flash/f/deep/sub/b",
                             "/flash/f/hidden/.a", "/flash/f/hidden/b"})
        device.write(path, "x");
    for (const char* path : {"/flash/f/file", "/flash/f/dir/", "/flash/f/deep", "/flash/f/hidden", "/flash/f/none"})
        journal.setOp(path, {OpKind::Delete, ""});
    journal.commit(false);
    EXPECT_EQ(device.tree("/flash/f"), (Tree{{"deep/sub/b", "x"}, {"hidden/.a", "x"}}));
}

TEST_F(CommitTest, DeletesBeforeItRenames) {
    device.write("/flash/dir/a", "old");
    device.write("/flash/source", "new");
    journal.addMove("/flash/source", "/flash/dir/a");
    journal.setOp("/flash/dir//a", {OpKind::Delete, ""});
    journal.addLink("/flash/new/dir/b", "/flash/dir/link");
    device.write("/flash/dir/link", "old");
    journal.stageFile("/flash/new/dir/b", 1, 0100640) << "b";
    journal.commit(false);
    EXPECT_EQ(device.tree("/flash"),
              (Tree{{"dir/a", "new"}, {"dir/link", "-> /flash/new/dir/b"}, {"new/dir/b", "b"}, {"var/pdb/", ""}}));
    EXPECT_EQ(device.mode("/flash/new/dir/b"), 0640U);
}

TEST_F(CommitTest, CopiesAcrossFileSystems) {
    const std::string big(50000, 'b');
    device.write("/flash/long", std::string(1000, 'o'));
    device.write("/flash/short", "old");
    ::chmod("/flash/long", 0604);
    for (const char* name : {"long", "short", "fresh"}) device.write(std::string("/ram/") + name, big);
    ::chmod("/ram/fresh", 0751);
    for (const char* name : {"long", "short", "fresh", "gone"})
        journal.addMove(std::string("/ram/") + name, std::string("/flash/") + name);
    device.write("/flash/gone", "cut to no more than its length, and not copied, as its source is no file");
    fs::create_directory("/ram/gone");
    journal.commit(false);
    EXPECT_EQ(device.read("/flash/long"), big);
    EXPECT_EQ(device.read("/flash/short"), big);
    EXPECT_EQ(device.read("/flash/fresh"), big);
    EXPECT_EQ(fs::file_size("/flash/gone"), 512U);
    EXPECT_EQ(device.mode("/flash/long"), 0604U);  // its own
    EXPECT_EQ(device.mode("/flash/fresh"), 0751U);
    EXPECT_EQ(device.read("/ram/long"), big);  // goes with the next restart
    EXPECT_EQ(journal.ops().at("/flash/long").kind, OpKind::Copy);
}

TEST_F(CommitTest, GoesOnBehindAFailure) {
    device.write("/flash/file", "x");
    device.write("/ram/MANIFEST", "L /flash/file/link text\nM /flash/a /flash/none\nM /flash/b /flash/file\n");
    const auto first = device.run({"--commit"});
    EXPECT_EQ(first.err, "symlink: Not a directory\nrename: No such file or directory\n");
    EXPECT_EQ(first.out, "finishing install... \b \n");
    EXPECT_EQ(device.tree("/flash"), (Tree{{"b", "x"}, {"var/pdb/", ""}}));
    EXPECT_EQ(device.run({"--commit"}).code, 0);
    EXPECT_EQ(device.tree("/ram").size(), 1U);  // the manifest stays
}

TEST_F(CommitTest, SpinsWhileItCopies) {
    device.write("/ram/small", "x");
    device.write("/ram/empty", "");
    device.write("/ram/MANIFEST", "M /flash/empty /ram/empty\nM /flash/small /ram/small\n");
    EXPECT_EQ(device.run({"--commit"}).out, "finishing install... |\b \n");
}

TEST(Commit, ReportsAFullDisk) {
    const DeviceRoot small(64);
    small.write("/ram/big", std::string(100000, 'b'));
    small.write("/ram/MANIFEST", "M /flash/a /ram/big\nM /flash/b /ram/big\n");
    EXPECT_EQ(small.run({"--commit"}).err,
              " write failed: No space left on device\n"
              " write failed: No space left on device\n");
    EXPECT_EQ(fs::file_size("/ram/big"), 100000U);
}

TEST_F(CommitTest, CancelModeDropsTheManifestOnly) {
    device.write("/flash/staged", "x");
    device.write("/flash/old", "x");
    device.write("/ram/MANIFEST", "M /flash/a /flash/staged\nU /flash/old\n");
    for (int i = 0; i < 2; ++i) {
        const auto run = device.run({"-r", "/nowhere", "-q", "--cancel", "--show"});
        EXPECT_EQ(run.out + run.err, "");
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(device.tree("/ram"), Tree{});
    }
    EXPECT_EQ(device.tree("/flash"), (Tree{{"old", "x"}, {"staged", "x"}, {"var/pdb/", ""}}));
}

}  // namespace
