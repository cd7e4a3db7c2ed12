#include <cerrno>
#include <cstdio>

#include <unistd.h>

#include "apply/change_journal.h"
#include "apply/copy_file.h"
#include "apply/directory_path.h"
#include "platform/directory_entries.h"

namespace {

constexpr off_t TRUNCATED_SIZE = 512;

/// Deletes a file, or a directory and the files in it. It goes one level down, and leaves hidden files,
/// and with them the directory.
void deleteTarget(const std::string& target) {
    if (::unlink(target.c_str()) == 0 || errno != EISDIR) return;
    const auto names = directoryEntries(target);
    if (!names) return;
    const std::string prefix = target + '/';
    for (const std::string& name : *names)
        if (!name.starts_with('.')) (void)::unlink((prefix + name).c_str());
    (void)::rmdir(target.c_str());
}

void replaceByLink(const std::string& target, const std::string& text) {
    makeDirs(parentPath(target));
    (void)::unlink(target.c_str());
    if (::symlink(text.c_str(), target.c_str()) != 0) ::perror("symlink");
}

}  // namespace

void ChangeJournal::commit(bool spinner) {
    ownsTemporaryFiles_ = false;
    applyRemovalsAndLinks();
    applyRenames();
    applyCopies(spinner);
}

void ChangeJournal::applyRemovalsAndLinks() const {
    for (const auto& [target, op] : ops_) {
        if (op.kind == OpKind::Delete) deleteTarget(target);
        if (op.kind == OpKind::Link) replaceByLink(target, op.arg);
    }
}

void ChangeJournal::applyRenames() {
    std::string madeDirectory;  // neighbours in the order mostly share theirs
    for (auto& [target, op] : ops_) {
        if (op.kind != OpKind::Move && op.kind != OpKind::Staged) continue;
        if (std::string directory = parentPath(target); directory != madeDirectory) {
            makeDirs(directory);
            madeDirectory = std::move(directory);
        }
        if (::rename(op.arg.c_str(), target.c_str()) == 0) continue;
        if (errno == EXDEV) {
            // Cut every target before the first copy starts: the copies may need that room.
            op.kind = OpKind::Copy;
            (void)::truncate(target.c_str(), TRUNCATED_SIZE);
        } else {
            ::perror("rename");
        }
    }
}

void ChangeJournal::applyCopies(bool spinner) const {
    for (const auto& [target, op] : ops_)
        if (op.kind == OpKind::Copy) copyFile(op.arg, target, spinner);
}
