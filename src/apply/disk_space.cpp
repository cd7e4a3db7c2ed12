#include "apply/disk_space.h"

#include <string>

#include <sys/stat.h>
#include <sys/statfs.h>

#include "apply/directory_path.h"

namespace {

constexpr std::int64_t RESERVE = 32768;  // bytes

/// The account of one file system.
class FsBudget {
public:
    /// `prefix` begins every target that counts here, and is the path of the file system. One that cannot be
    /// asked has blocks of a byte, and none free.
    explicit FsBudget(std::string prefix) : prefix_(std::move(prefix)) {
        struct statfs status;
        if (::statfs(prefix_.c_str(), &status) != 0) return;
        blockSize_ = status.f_bsize;
        freeBlocks_ = initialFreeBlocks_ = static_cast<std::int64_t>(status.f_bfree);
    }

    bool covers(const std::string& target) const { return target.starts_with(prefix_); }

    void apply(const std::string& target, const ChangeOp& op) {
        creditTarget(target);
        if (op.kind == OpKind::Move || op.kind == OpKind::Staged) debitSource(op.arg, target);
    }

    std::int64_t bytesLeft() const {
        const std::int64_t bytes = freeBlocks_ * blockSize_;
        return freeBlocks_ < initialFreeBlocks_ ? bytes - RESERVE : bytes;
    }

private:
    /// Counts the old file that the op does away with, a link by its own size.
    void creditTarget(const std::string& target) {
        struct stat status;
        if (::lstat(target.c_str(), &status) == 0) freeBlocks_ += blocks(status.st_size);
    }

    /// Counts the new file, unless it lies on the file system of its target already.
    void debitSource(const std::string& source, const std::string& target) {
        struct stat status;
        if (::stat(source.c_str(), &status) == 0 && !isOnDeviceOf(target, status.st_dev))
            freeBlocks_ -= blocks(status.st_size);
    }

    /// Whether the deepest directory on the way to the target that exists is on the device.
    static bool isOnDeviceOf(const std::string& target, dev_t device) {
        std::string directory = possibleParent(parentPath(target));
        struct stat status;
        while (::stat(directory.c_str(), &status) != 0) {
            if (directory == "/" || directory == ".") return false;
            directory = parentPath(directory);
        }
        return status.st_dev == device;
    }

    std::int64_t blocks(std::int64_t size) const { return (size + blockSize_ - 1) / blockSize_; }

    std::string prefix_;
    std::int64_t blockSize_ = 1;
    std::int64_t freeBlocks_ = 0;
    std::int64_t initialFreeBlocks_ = 0;
};

}  // namespace

DiskSpace checkDiskSpace(const ChangeJournal& journal) {
    FsBudget kernel("/flash/boot/");
    FsBudget disk("/flash/");
    for (const auto& [target, op] : journal.ops()) {
        if (kernel.covers(target))
            kernel.apply(target, op);
        else if (disk.covers(target))
            disk.apply(target, op);
    }
    return {.kernelBytes = kernel.bytesLeft(), .diskBytes = disk.bytesLeft()};
}
