#include "apply/package_changes.h"

#include <sys/stat.h>

#include "database/state_files.h"

namespace {

constexpr const char* BOOT_IMAGE = "/flash/bootimage";

/// Records hold paths both with and without the "/flash" in front; the journal knows a file by one only.
std::string pathOnFlash(const std::string& entry) { return entry.starts_with("/flash/") ? entry : "/flash" + entry; }

}  // namespace

void removePackage(ChangeJournal& journal, InstalledPackage& package) {
    for (const std::string& entry : package.files) journal.removePath(pathOnFlash(entry));
    package.files.clear();
    journal.removePath(package.directory());
    journal.removePath(package.directory() + "image");
    struct stat status;
    if ((package.flags & PKG_FLAG_BOOT) != 0 && ::stat(BOOT_IMAGE, &status) == 0 && status.st_nlink == 1)
        journal.removePath(BOOT_IMAGE);
    package.scheduled = Schedule::None;
}

bool claimPackageDir(ChangeJournal& journal, const InstalledPackage& package) {
    const std::string directory = package.directory();
    if (const ChangeOp* op = journal.find(directory)) {
        if (op->kind != OpKind::Delete) return false;
        journal.dropOp(directory);
    }
    // Without the trailing slash, with which stat does not tell a plain file from nothing.
    struct stat status;
    const std::string path = directory.substr(0, directory.size() - 1);
    return ::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode);
}

void enablePackage(ChangeJournal& journal, InstalledPackage& package) {
    package.disabled = false;
    package.scheduled = Schedule::None;
    writeStateFiles(package, journal);
}

void enablePackages(ChangeJournal& journal, Reporter& reporter, const std::vector<InstalledPackage*>& packages,
                    bool verbose) {
    for (InstalledPackage* package : packages) {
        if (verbose) reporter.setStatus("enabling " + nameVersion(*package) + "...");
        enablePackage(journal, *package);
        if (verbose) reporter.info("enabled %s", nameVersion(*package).c_str());
    }
}

void disablePackage(ChangeJournal& journal, InstalledPackage& package) {
    package.disabled = true;
    package.scheduled = Schedule::None;
    if (!package.isConflictNote()) writeStateFiles(package, journal);
}
