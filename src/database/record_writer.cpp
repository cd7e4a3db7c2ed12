#include "database/record_writer.h"

#include <string_view>

#include "database/dependency_file.h"
#include "database/state_files.h"

namespace {

bool writeVersionFile(const InstalledPackage& package, ChangeJournal& journal, const std::string& path) {
    StagedFile file = journal.stageFile(path, 32, 0);
    file << package.version << ' ' << package.buildTime << '\n';
    return static_cast<bool>(file.flush());
}

bool writeBundleFile(const InstalledPackage& package, ChangeJournal& journal, const std::string& path) {
    if (!package.isMember()) {
        journal.removePath(path);
        return true;
    }
    StagedFile file = journal.stageFile(path, 16, 0);
    file << package.bundle.name << '\n';
    return static_cast<bool>(file.flush());
}

/// One line for each file. A bundle has none, and is known by that at the next load.
bool writeFileList(const InstalledPackage& package, ChangeJournal& journal, const std::string& path) {
    if (package.isBundle) return true;
    StagedFile file = journal.stageFile(path, 4096, 0);
    for (std::string_view entry : package.files) {
        if (entry.starts_with('/')) entry.remove_prefix(1);
        if (!entry.empty()) file << entry << '\n';
    }
    return static_cast<bool>(file.flush());
}

bool writeListIfAny(ChangeJournal& journal, const std::string& path, const std::vector<PackageDependency>& entries,
                    bool withPriority) {
    return entries.empty() || writeDependencyFile(journal, path, entries, withPriority);
}

/// Name of the meta file that could not be staged, as the user is told; null if all were.
const char* writeMetaFiles(const InstalledPackage& package, ChangeJournal& journal) {
    const std::string directory = package.directory();
    if (!writeVersionFile(package, journal, directory + "version")) return "meta/version";
    if (!writeDependencyFile(journal, directory + "deps", package.dependencies, false)) return "meta/deps";
    if (!writeListIfAny(journal, directory + "provides", package.provides, true)) return "meta/provides";
    if (!writeListIfAny(journal, directory + "conflicts", package.conflicts, false)) return "meta/conflicts";
    if (!writeBundleFile(package, journal, directory + "bundle")) return "meta/bundle";
    if (!writeFileList(package, journal, directory + "files")) return "meta/files";
    return nullptr;
}

}  // namespace

bool writePackageRecord(const InstalledPackage& package, ChangeJournal& journal, Reporter& reporter) {
    if (!package.hasImage && (package.flags & PKG_FLAG_NO_METADATA) == 0) {
        if (const char* label = writeMetaFiles(package, journal)) {
            reporter.reportFileFailure(package, label);
            return false;
        }
    }
    writeStateFiles(package, journal);
    return true;
}
