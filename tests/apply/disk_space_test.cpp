#include "apply/disk_space.h"

#include <filesystem>

#include "support/real_disks.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t BLOCK = 1024;

struct DiskSpaceTest : RealDiskTest {
    void SetUp() override {
        RealDiskTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        leaveFree("/flash", 100);
        leaveFree("/flash/boot", 100);
    }

    /// What an op leaves free on the disk and the kernel disk, in blocks of what was free, without the reserve.
    std::pair<std::int64_t, std::int64_t> change(const std::string& target, const ChangeOp& op) const {
        ChangeJournal journal;
        const DiskSpace before = checkDiskSpace(journal);
        journal.setOp(target, op);
        const DiskSpace after = checkDiskSpace(journal);
        const auto blocks = [](std::int64_t from, std::int64_t to) {
            return to < from ? (to + 32768 - from) / BLOCK : (to - from) / BLOCK;
        };
        return {blocks(before.diskBytes, after.diskBytes), blocks(before.kernelBytes, after.kernelBytes)};
    }
};

TEST_F(DiskSpaceTest, CountsWhatGoesAndWhatComesInWholeBlocks) {
    device.write("/flash/old", std::string(10 * BLOCK - 5, 'o'));
    device.write("/flash/boot/kernel", std::string(3 * BLOCK, 'k'));
    device.write("/flash/beside", std::string(12 * BLOCK, 'b'));
    device.write("/ram/new", std::string(11 * BLOCK + 1, 'n'));
    device.write("/ram/empty", "");
    device.write("/elsewhere", "x");
    fs::create_symlink("/flash/old", "/flash/link");
    using Blocks = std::pair<std::int64_t, std::int64_t>;
    struct Case {
        const char* what;
        std::string target;
        ChangeOp op;
        Blocks blocks;
    };
    for (const auto& [what, target, op, blocks] :
         {Case{"deleted", "/flash/old", {OpKind::Delete, ""}, {10, 0}},
          Case{"deleted under another key", "/flash//old", {OpKind::Delete, ""}, {10, 0}},
          Case{"nothing there", "/flash/none", {OpKind::Delete, ""}, {0, 0}},
          Case{"a link by its own size", "/flash/link", {OpKind::Delete, ""}, {1, 0}},
          Case{"replaced by a link", "/flash/old", {OpKind::Link, "/flash/beside"}, {10, 0}},
          Case{"from another disk", "/flash/old", {OpKind::Move, "/ram/new"}, {-2, 0}},
          Case{"from another disk to a new directory", "/flash/a/b/c", {OpKind::Move, "/ram/new"}, {-12, 0}},
          Case{"nothing from another disk", "/flash/a", {OpKind::Move, "/ram/empty"}, {0, 0}},
          Case{"beside its target", "/flash/a/b/c", {OpKind::Move, "/flash/beside"}, {0, 0}},
          Case{"beside what it replaces", "/flash/old", {OpKind::Move, "/flash/beside"}, {10, 0}},
          Case{"a source that is gone", "/flash/old", {OpKind::Move, "/ram/gone"}, {10, 0}},
          Case{"on the kernel disk", "/flash/boot/kernel", {OpKind::Move, "/flash/beside"}, {0, -9}},
          Case{"beside it by name only", "/flash/bootimage", {OpKind::Move, "/ram/new"}, {-12, 0}},
          Case{"outside both", "/elsewhere", {OpKind::Move, "/ram/new"}, {0, 0}},
          Case{"a staged file, which goes with its journal", "/flash/old", {OpKind::Staged, "/ram/new"}, {-2, 0}}})
        EXPECT_EQ(change(target, op), blocks) << what;
}

TEST_F(DiskSpaceTest, KeepsAReserveOnceItTakesMoreThanItGives) {
    device.write("/ram/block", "x");
    device.write("/flash/old", "x");
    ChangeJournal journal;
    leaveFree("/flash", 33);
    EXPECT_EQ(checkDiskSpace(journal).diskBytes, 33 * BLOCK);
    journal.addMove("/ram/block", "/flash/old");
    EXPECT_EQ(checkDiskSpace(journal).diskBytes, 33 * BLOCK) << "as much as it gives back";
    journal.addMove("/ram/block", "/flash/new");
    EXPECT_EQ(checkDiskSpace(journal).diskBytes, 0);
    EXPECT_TRUE(checkDiskSpace(journal).suffices());
    leaveFree("/flash", 32);
    EXPECT_EQ(checkDiskSpace(journal).diskBytes, -BLOCK);
    EXPECT_FALSE(checkDiskSpace(journal).suffices());
}

TEST(DiskSpace, CountsInBytesWhereNoDiskAnswers) {
    const DeviceRoot device;  // without a "/flash/boot"
    device.write("/ram/new", "five.");
    ChangeJournal journal;
    EXPECT_EQ(checkDiskSpace(journal).kernelBytes, 0);
    journal.addMove("/ram/new", "/flash/boot/kernel");
    EXPECT_EQ(checkDiskSpace(journal).kernelBytes, -5 - 32768);
}

}  // namespace
