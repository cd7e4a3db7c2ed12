#include "planning/eligibility.h"

#include "planning/device_mode.h"
#include "planning/relations.h"
#include "platform/file_exists.h"
#include "platform/kestrion.h"

namespace {

constexpr InstallFlags REFUSED_BY_DEVICE = EligibleRefused | EligibleConflict;

/// One check of one candidate: the bits found so far, and whether the user has been told a reason.
class Check {
public:
    Check(PackageDb& db, const PackageInfo& candidate, InstallFlags permitted)
        : db_(db), candidate_(candidate), name_(nameVersion(candidate)), permitted_(permitted) {}

    InstallFlags run() {
        compareWithInstalled();
        checkMinimumVersion();
        checkArchitecture();
        checkDependencies();
        checkConflicts();
        checkDeviceMode();
        return result_;
    }

private:
    /// Adds the bit. True if its reason is to be told, that is if it is neither waived nor the second one.
    bool found(InstallFlags bit) {
        result_ |= bit;
        if (reported_ || (permitted_ & bit) != 0) return false;
        return reported_ = true;
    }

    void compareWithInstalled() {
        const InstalledPackage* installed = db_.find(candidate_.name);
        // These two are neither older nor newer than anything.
        if (installed == nullptr || installed->name == "branding" || installed->name.starts_with("firmware-")) return;
        if (installed->buildTime > candidate_.buildTime && flaggedState != 0) {
            db_.warning("cannot install older %s: %s", name_.c_str(), "router in flagged state");
            result_ = REFUSED_BY_DEVICE;
            reported_ = true;
        }
        const int order = comparePackages(candidate_, *installed);
        if (order < 0) {
            if (found(EligibleOlder))
                db_.warning("omitting package %s: newer package %s is already installed", name_.c_str(),
                            nameVersion(*installed).c_str());
        } else if (order == 0) {
            if (found(EligibleSame)) db_.warning("omitting package %s: it is already installed", name_.c_str());
        } else {
            result_ |= EligibleNewer;
        }
    }

    void checkMinimumVersion() {
        if (candidate_.name != "system" && !candidate_.name.starts_with("kestrion")) return;
        const PackageVersion minimum = getMinKestrionVersion();
        if (candidate_.version < minimum && found(EligibleRefused))
            db_.error("omitting package %s: min Kestrion version is %s", name_.c_str(),
                      version2string(minimum).c_str());
    }

    void checkArchitecture() {
        if (candidate_.arch.empty() || candidate_.arch == db_.arch) return;
        if (found(EligibleRefused))
            db_.error("can not install %s: it is not made for %s, but for %s", name_.c_str(), db_.arch.c_str(),
                      candidate_.arch.c_str());
    }

    void checkDependencies() {
        for (const PackageDependency& dependency : candidate_.dependencies) {
            if (!findProviders(db_, dependency).empty()) continue;
            if (found(EligibleRefused))
                db_.error("can not install %s: %s is not installed, but is required", name_.c_str(),
                          dependencyText(dependency).c_str());
            return;
        }
    }

    void checkConflicts() {
        const InstalledPackage* other = findConflict(db_, candidate_);
        if (other != nullptr && found(EligibleConflict))
            db_.error("can not install %s: it conflicts with %s", name_.c_str(), nameVersion(*other).c_str());
    }

    /// No permission waives this one.
    void checkDeviceMode() {
        if (allowedByDeviceMode(candidate_) || fileExists("/ram/SECURE")) return;
        result_ |= REFUSED_BY_DEVICE;
        if (!reported_) db_.error("will not install package %s, not allowed by device-mode", name_.c_str());
    }

    PackageDb& db_;
    const PackageInfo& candidate_;
    const std::string name_;
    const InstallFlags permitted_;
    InstallFlags result_ = 0;
    bool reported_ = false;
};

}  // namespace

InstallFlags checkInstallEligibility(PackageDb& db, const PackageInfo& candidate, InstallFlags permitted) {
    return Check(db, candidate, permitted).run();
}
