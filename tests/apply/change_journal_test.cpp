#include "apply/change_journal.h"

#include <cerrno>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statfs.h>

#include "apply/directory_path.h"
#include "support/device_root.h"

namespace {

namespace fs = std::filesystem;

struct ChangeJournalTest : testing::Test {
    void stage(const std::string& target, std::uint32_t sizeHint = 1) {
        journal.stageFile(target, sizeHint, 0) << "new";
    }

    OpKind kindOf(const std::string& target) const { return journal.ops().at(target).kind; }

    /// Where the temporary file of a target lies.
    std::string placeOf(const std::string& target) const {
        return fs::path(journal.ops().at(target).arg).parent_path();
    }

    DeviceRoot device;
    ChangeJournal journal;
};

TEST_F(ChangeJournalTest, KeepsOneTemporaryFileForATarget) {
    stage("/flash/a");
    const std::string first = journal.ops().at("/flash/a").arg;
    stage("/flash/a");
    EXPECT_EQ(device.read(first), "(none)");
    EXPECT_EQ(device.tree("/flash").size(), 2U);  // the file and "var/pdb"
    EXPECT_EQ(journal.ops().size(), 1U);
    journal.addMove("/ram/b", "/flash/a");
    EXPECT_EQ(device.tree("/flash"), (Tree{{"var/pdb/", ""}}));
}

TEST_F(ChangeJournalTest, RemovesWhatIsOnDiskAndUnstagesWhatIsNot) {
    stage("/flash/new");
    journal.removePath("/flash/new");
    EXPECT_TRUE(journal.empty());

    device.write("/flash/old", "old");
    stage("/flash/old");
    journal.removePath("/flash/old");
    EXPECT_EQ(kindOf("/flash/old"), OpKind::Delete);
    journal.addMove("/ram/x", "/flash/old");
    EXPECT_EQ(kindOf("/flash/old"), OpKind::Move);

    journal.removePath("/flash/neither");
    EXPECT_EQ(journal.ops().size(), 1U);
    EXPECT_EQ(device.tree("/flash"), (Tree{{"old", "old"}, {"var/pdb/", ""}}));
}

TEST_F(ChangeJournalTest, StagesBesideTheTargetWhereThereIsRoom) {
    struct statfs status;
    ASSERT_EQ(::statfs("/flash", &status), 0);
    const auto free = static_cast<std::uint32_t>(status.f_bfree * static_cast<unsigned long>(status.f_bsize));
    const std::uint32_t justTooMuch = free - 65536;
    stage("/flash/b/exactly", justTooMuch);
    EXPECT_EQ(placeOf("/flash/b/exactly"), "/ram");
    stage("/flash/b/less", justTooMuch - 1);
    EXPECT_EQ(placeOf("/flash/b/less"), "/flash");  // the deepest directory that there is
    stage("/flash/var/pdb/p/version");
    EXPECT_EQ(placeOf("/flash/var/pdb/p/version"), "/flash/var/pdb");
    stage("/flash/empty", 0);
    EXPECT_EQ(placeOf("/flash/empty"), "/ram");
}

TEST_F(ChangeJournalTest, WastesNothingOnAPathThatNoFileCanHave) {
    std::string endless = "/flash";
    for (int i = 0; i < 1000000; ++i) endless += "/a";
    stage(endless);  // in hours, and the commit in terabytes, if each of its parents were tried
    EXPECT_EQ(placeOf(endless), "/flash");
    journal.commit(false);
    EXPECT_TRUE(fs::is_directory("/flash/a/a"));  // as far as there can be directories, they are made
}

TEST_F(ChangeJournalTest, FallsBackToTmpForEmptyFilesOnly) {
    ASSERT_EQ(::umount("/ram"), 0);
    fs::remove("/ram");
    stage("/flash/empty", 0);
    EXPECT_EQ(placeOf("/flash/empty"), "/tmp");
    const StagedFile stream = journal.stageFile("/flash/big", 0xFFFFFFFF, 0);
    EXPECT_FALSE(stream.isOpen());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kindOf("/flash/big"), OpKind::Staged);
}

TEST_F(ChangeJournalTest, SetsTheModeOfAStagedFile) {
    for (const auto& [mode, bits] : {std::pair{0U, 0600U}, {0100755U, 0755U}, {0104711U, 04711U}}) {
        journal.stageFile("/flash/a", 1, mode);
        EXPECT_EQ(device.mode(journal.ops().at("/flash/a").arg), bits);
    }
}

TEST_F(ChangeJournalTest, LeavesNoTemporaryFileBehind) {
    {
        ChangeJournal dropped;
        dropped.stageMarker("/flash/a");
        dropped.stageFile("/flash/b", 0, 0);
        device.write("/flash/source", "kept");
        dropped.addMove("/flash/source", "/flash/c");
    }
    EXPECT_EQ(device.tree("/flash"), (Tree{{"source", "kept"}, {"var/pdb/", ""}}));
    EXPECT_EQ(device.tree("/ram"), Tree{});
}

TEST(ParentPath, IsThatOfTheSystem) {
    for (const auto& [path, parent] : {std::pair{"/flash/var/pdb/a/", "/flash/var/pdb"},
                                       {"/flash/a", "/flash"},
                                       {"/flash//a", "/flash"},
                                       {"/a", "/"},
                                       {"/", "."},
                                       {"name", "."},
                                       {"", "."}})
        EXPECT_EQ(parentPath(path), parent) << path;
}

}  // namespace
