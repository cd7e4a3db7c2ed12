#include "run/scheduled_upgrade.h"

#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <unistd.h>

#include "apply/install_stream.h"
#include "apply/package_changes.h"
#include "console/post_log.h"
#include "planning/directory_scan.h"
#include "planning/relations.h"
#include "planning/selection.h"
#include "platform/file_exists.h"
#include "platform/file_source.h"

namespace {

constexpr const char* BOOT_IMAGE = "/flash/bootimage";

/// What the scans of the package directories found.
struct Search {
    std::vector<std::unique_ptr<PackageFile>> candidates;
    bool fromDownload = false;  ///< it ended in the download directory and did not go on to flash
};

Search findCandidates(PackageDb& db) {
    Search search;
    scanPackageDirectory("/rw/pckg/.download_firmware/", search.candidates, db);
    if (!fileExists("/rw/pckg/.download/IGNORE")) {
        scanPackageDirectory("/rw/pckg/.download/", search.candidates, db);
        search.fromDownload = true;
        if (!search.candidates.empty()) return search;
    }
    // The permit is for downloads: what comes from flash is always held to the device-mode.
    (void)::unlink("/ram/SECURE");
    search.fromDownload = false;
    scanPackageDirectory("/flash/rw/pckg/", search.candidates, db);
    if (search.candidates.empty()) scanPackageDirectory("/flash/var/pckg/", search.candidates, db);
    return search;
}

/// The lowest version that a requested downgrade may go to; nothing without a request.
std::optional<PackageVersion> requestedDowngrade() {
    std::ifstream file("/ram/DOWNGRADE");
    if (!file.is_open()) return std::nullopt;
    PackageVersion floor = 0;
    file >> floor;
    return floor;
}

CarriedStates chosenStates(const PackageDb& db) {
    CarriedStates states;
    for (const auto& package : db.packages)
        if (package->user) states[package->name] = package->disabled;
    return states;
}

/// The names that active packages answer to.
std::set<std::string> namesInUse(const PackageDb& db) {
    std::set<std::string> names;
    for (const auto& package : db.packages) {
        if (package->disabled) continue;
        names.insert(package->name);
        for (const PackageDependency& entry : package->provides) names.insert(entry.name);
    }
    return names;
}

/// Stages the move of an installed candidate's file to where its image belongs.
void stageImage(ChangeJournal& journal, const PackageFile& candidate, bool isBootImage) {
    const std::string image = InstalledPackage::root + candidate.name + "/image";
    if (!isBootImage) {
        journal.addMove(candidate.path, image);
        return;
    }
    journal.addMove(candidate.path, BOOT_IMAGE);
    journal.addLink(BOOT_IMAGE, image);
    journal.removePath("/flash/boot/kernel");
}

/// Installs the candidates in order. Nothing at the first one that fails.
std::optional<std::vector<PackageInfo>> installAll(const InstallContext& context,
                                                   const std::vector<PackageFile*>& candidates) {
    std::vector<PackageInfo> installed;
    for (const PackageFile* candidate : candidates) {
        if ((candidate->flags & PKG_FLAG_DISCARD) != 0) {
            (void)::unlink(candidate->path.c_str());
            continue;
        }
        FileSource file(candidate->path);
        if (!file.isOpen()) continue;
        ImageTarget image;
        if (installStream(context, file, nullptr, image) != InstallResult::Installed) return std::nullopt;
        if (candidate->hasImage) stageImage(context.journal, *candidate, image.bootImage);
        installed.push_back(static_cast<const PackageInfo&>(*candidate));
    }
    return installed;
}

/// Checks that each name still stands for a package, and enables what is needed again. An upgrade from the
/// download directory may drop a package. False if one is missing, which has been reported.
bool keepNamesInUse(PackageDb& db, ChangeJournal& journal, const std::set<std::string>& names, bool fromDownload) {
    std::vector<InstalledPackage*> toEnable;
    for (const std::string& name : names) {
        InstalledPackage* package = findActiveOrLast(db, name);
        if (package == nullptr && !fromDownload) {
            db.error("missing package %s", name.c_str());
            return false;
        }
        if (package != nullptr && package->disabled && findConflict(db, *package) == nullptr)
            toEnable.push_back(package);
    }
    enablePackages(journal, db, toEnable, true);
    return true;
}

void enableRequestedIpv6(const PackageDb& db, ChangeJournal& journal) {
    InstalledPackage* package = findActiveOrLast(db, "ipv6");
    if (package == nullptr || !package->disabled || !fileExists("/ram/ipv6")) return;
    package->user = true;
    enablePackage(journal, *package);
}

bool hasAnyPackage(PackageDb& db) {
    if (db.packages.empty()) db.error("router installation failed!!!");
    return !db.packages.empty();
}

}  // namespace

std::vector<PackageInfo> runScheduledUpgrade(PackageDb& db, ChangeJournal& journal, InstallFlags flags) {
    const auto downgradeFloor = requestedDowngrade();
    if (downgradeFloor) flags |= allowDowngrade;

    const Search search = findCandidates(db);
    std::vector<PackageFile*> candidates;
    for (const auto& candidate : search.candidates) candidates.push_back(candidate.get());
    selectPackages(db, candidates, downgradeFloor.value_or(NO_DOWNGRADE), true);

    const CarriedStates carriedStates = chosenStates(db);
    const auto requiredNames = namesInUse(db);
    if (!candidates.empty()) takeOverPostLog(db);

    const InstallContext context = {.db = db, .journal = journal, .flags = flags, .carriedStates = carriedStates};
    auto installed = installAll(context, candidates);
    if (installed && keepNamesInUse(db, journal, requiredNames, search.fromDownload)) {
        enableRequestedIpv6(db, journal);
        if (hasAnyPackage(db)) return *std::move(installed);
    }
    journal.cancel();
    return {};
}
