#include "apply/install_stream.h"

#include <set>

#include "apply/package_changes.h"
#include "database/record_writer.h"
#include "package/package_header.h"
#include "planning/eligibility.h"
#include "planning/state_changes.h"

namespace {

/// Makes the eligibility check see a conflict for a name, so that the member of that name is installed
/// disabled.
std::unique_ptr<InstalledPackage> conflictNote(const std::string& name) {
    auto note = std::make_unique<InstalledPackage>("");
    note->conflicts.push_back({.name = name});
    return note;
}

/// The installation of one bundle.
class BundleInstallation {
public:
    BundleInstallation(const InstallContext& context, PartReader& reader, ImageTarget& imageTarget)
        : context_(context), db_(context.db), journal_(context.journal), reader_(reader), imageTarget_(imageTarget) {}

    InstallResult run() {
        imageTarget_.bootImage = false;
        auto bundle = std::make_unique<InstalledPackage>("");
        if (!parsePackageHeader(*bundle, reader_)) return InstallResult::Failed;
        if (!bundle->hasUsableName()) {
            db_.reportBrokenPackage(*bundle);
            return InstallResult::Failed;
        }
        // No signature covers the head of a bundle, so it may not take part in the relations.
        if (!bundle->dependencies.empty() || !bundle->provides.empty() || !bundle->conflicts.empty())
            return InstallResult::Failed;
        if (reader_.partId() == PART_IMAGE) reader_.nextPart();
        if (imageTarget_.isStream) imageTarget_.directory = bundle->directory();
        if ((checkInstallEligibility(db_, *bundle, context_.flags) & ~context_.flags) != 0)
            return InstallResult::BundleFailed;

        if (InstalledPackage* installed = db_.find(bundle->name)) {
            removePackage(journal_, *installed);
            db_.release(*installed);
        }
        if (!claimPackageDir(journal_, *bundle)) return InstallResult::Failed;
        if (!writePackageRecord(*bundle, journal_, db_)) return InstallResult::Failed;
        const PackageDependency entry = {
            .name = bundle->name, .minVersion = bundle->version, .maxVersion = bundle->version};
        if (const InstalledPackage* second = db_.find(entry.name)) db_.release(*second);
        db_.packages.push_back(std::move(bundle));

        noteOldMembers(entry.name);
        holdBackListedMembers();
        return installMembers(entry);
    }

private:
    void noteOldMembers(const std::string& bundleName) {
        for (const auto& package : db_.packages)
            if (package->bundle.name == bundleName) leftovers_.insert(package->name);
    }

    /// The members in the bundle's list are installed disabled, but for those that the user chose a state of.
    void holdBackListedMembers() {
        if (reader_.partId() != PART_BUNDLE_MEMBERS) return;
        std::vector<PackageDependency> listed;
        (void)readDependencyList(reader_, listed);  // one cut off leaves a stream without members
        for (const PackageDependency& member : listed)
            if (!context_.carriedStates.contains(member.name)) db_.packages.push_back(conflictNote(member.name));
        reader_.nextPart();
    }

    InstallResult installMembers(const PackageDependency& entry) {
        bool hasMember = false;
        while (reader_.partId() == PART_PACKAGE_HEADER) {
            ImageTarget memberImage;
            const auto name = installPackage(context_, reader_, &entry, memberImage);
            if (!name) return InstallResult::BundleFailed;
            leftovers_.erase(*name);
            hasMember = true;
            imageTarget_.bootImage |= memberImage.bootImage;
        }
        if (reader_.partId() == PART_ARCHITECTURE) reader_.nextPart();
        if (reader_.partId() != PART_END) return InstallResult::BundleFailed;
        if (!hasMember) return InstallResult::BundleEmpty;

        for (const std::string& name : leftovers_)
            if (InstalledPackage* package = db_.find(name)) package->scheduled = Schedule::Uninstall;
        applySchedule(db_, journal_, 0);
        db_.setStatus("");
        return InstallResult::Installed;
    }

    const InstallContext& context_;
    PackageDb& db_;
    ChangeJournal& journal_;
    PartReader& reader_;
    ImageTarget& imageTarget_;
    std::set<std::string> leftovers_;  // members of the old version that the new one has not brought yet
};

}  // namespace

InstallResult installStream(const InstallContext& context, std::streambuf& stream, std::streambuf* copyTarget,
                            ImageTarget& imageTarget) {
    PartReader reader(stream, true, copyTarget);
    reader.want({PART_PACKAGE_HEADER, PART_BUNDLE_HEADER, PART_BUNDLE_MEMBERS, PART_ARCHITECTURE, PART_DEPENDENCIES,
                 PART_PROVIDES, PART_CONFLICTS, PART_IMAGE, PART_FILES, PART_SIGNATURE});
    if (reader.nextPart() == PART_BUNDLE_HEADER) return BundleInstallation(context, reader, imageTarget).run();
    return installPackage(context, reader, nullptr, imageTarget) ? InstallResult::Installed : InstallResult::Failed;
}
