#include "database/state_files.h"

#include <string_view>

namespace {

void writeStateFile(ChangeJournal& journal, const std::string& path, bool wanted, std::string_view word) {
    if (wanted)
        journal.stageFile(path, 8, 0) << word << '\n';
    else
        journal.removePath(path);
}

}  // namespace

void writeStateFiles(const InstalledPackage& package, ChangeJournal& journal) {
    const std::string directory = package.directory();
    writeStateFile(journal, directory + "disabled", package.disabled, package.user ? "user" : "auto");
    writeStateFile(journal, directory + "enabled", !package.disabled && package.user, "user");
}
