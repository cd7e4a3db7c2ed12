#include "support/real_disks.h"

#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <sys/statfs.h>

#include "platform/unique_fd.h"

namespace {

unsigned long freeBlocks(const std::string& path) {
    struct statfs status {};
    (void)::statfs(path.c_str(), &status);
    return static_cast<unsigned long>(status.f_bfree);
}

}  // namespace

void RealDiskTest::SetUp() {
    for (const std::string disk : {"/flash", "/flash/boot"}) {
        const std::string image = disk == "/flash" ? "/flash.ext4" : "/boot.ext4";
        std::filesystem::create_directories(disk);
        // Without extents the driver holds nothing back, and the last block can be had.
        const Lines format = {"/usr/sbin/mkfs.ext4", "-q", "-F", "-O", "^extent,^64bit", "-b", "1024", image, "4M"};
        std::string failure = device.execute(format).err;
        if (failure.empty()) failure = device.execute({"/usr/bin/mount", "-t", "ext4", "-o", "loop", image, disk}).err;
        if (failure.empty()) continue;
        if (std::getenv("NO_SKIPPED_TESTS") != nullptr) FAIL() << failure;
        GTEST_SKIP() << "no ext4 on a loop device here: " << failure;
    }
    std::filesystem::create_directories("/flash/var/pdb");
}

void RealDiskTest::leaveFree(const std::string& path, unsigned long blocks) const {
    // The file system takes some blocks for itself as the file grows, so it is approached from below.
    const std::string filler = path + "/filler";
    const UniqueFd file(::open(filler.c_str(), O_RDWR | O_CREAT, 0600));
    off_t size = ::lseek(file.get(), 0, SEEK_END);
    for (int i = 0; i < 50 && freeBlocks(path) != blocks; ++i) {
        const off_t excess = off_t(freeBlocks(path)) - off_t(blocks);
        size += (excess > 32 ? excess * 9 / 10 : excess) * 1024;
        ASSERT_EQ(::ftruncate(file.get(), size), 0);
        ASSERT_EQ(::posix_fallocate(file.get(), 0, size), 0);
    }
    ASSERT_EQ(freeBlocks(path), blocks);
}
