#include "apply/change_journal.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include "apply/directory_path.h"
#include "platform/file_exists.h"
#include "platform/unique_fd.h"

namespace {

constexpr std::uint64_t STAGING_RESERVE = 65536;  // bytes to stay free beside a staged file

void removeTemporaryFile(const ChangeOp& op) {
    if (op.kind == OpKind::Staged) (void)::unlink(op.arg.c_str());  // gone already is as good
}

}  // namespace

/// Where the temporary file of a target goes: beside it if there is room, so that the commit can rename.
std::string ChangeJournal::stagingDirectory(const std::string& target, std::uint32_t sizeHint) {
    if (sizeHint == 0) return fileExists("/ram") ? "/ram" : "/tmp";
    if (std::string parent = parentPath(target); parent != stagedParent_) {
        existingParent_ = possibleParent(parent);
        stagedParent_ = std::move(parent);
    }
    struct statfs status;
    while (::statfs(existingParent_.c_str(), &status) != 0) {
        if (existingParent_ == "/" || existingParent_ == ".") return "/ram";
        existingParent_ = parentPath(existingParent_);
    }
    const std::uint64_t free = std::uint64_t(status.f_bfree) * static_cast<std::uint64_t>(status.f_bsize);
    return free > sizeHint + STAGING_RESERVE ? existingParent_ : "/ram";
}

ChangeJournal::~ChangeJournal() {
    if (ownsTemporaryFiles_) cancel();
}

void ChangeJournal::setOp(const std::string& target, ChangeOp op) {
    const auto [entry, isNew] = ops_.try_emplace(target, std::move(op));
    if (isNew) return;
    removeTemporaryFile(entry->second);
    entry->second = std::move(op);
}

void ChangeJournal::removePath(const std::string& target) {
    if (fileExists(target))
        setOp(target, {OpKind::Delete, ""});
    else
        dropOp(target);
}

void ChangeJournal::dropOp(const std::string& target) {
    const auto entry = ops_.find(target);
    if (entry == ops_.end()) return;
    removeTemporaryFile(entry->second);
    ops_.erase(entry);
}

void ChangeJournal::addMove(const std::string& source, const std::string& target) {
    setOp(target, {OpKind::Move, source});
}

void ChangeJournal::addLink(const std::string& text, const std::string& target) { setOp(target, {OpKind::Link, text}); }

StagedFile ChangeJournal::stageFile(const std::string& target, std::uint32_t sizeHint, std::uint32_t mode) {
    std::string name = stagingDirectory(target, sizeHint) + "/tmpXXXXXX";
    UniqueFd file(::mkostemp(name.data(), O_CLOEXEC));
    const int failure = errno;
    if (file && mode != 0) (void)::fchmod(file.get(), mode);
    setOp(target, {OpKind::Staged, std::move(name)});
    if (!file) errno = failure;
    return StagedFile(std::move(file));
}

void ChangeJournal::cancel() {
    for (const auto& [target, op] : ops_) removeTemporaryFile(op);
    ops_.clear();
}

const ChangeOp* ChangeJournal::find(const std::string& target) const {
    const auto entry = ops_.find(target);
    return entry == ops_.end() ? nullptr : &entry->second;
}
