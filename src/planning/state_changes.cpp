#include "planning/state_changes.h"

#include <algorithm>

#include "apply/package_changes.h"
#include "planning/relations.h"
#include "planning/requirements.h"
#include "planning/selection.h"

namespace {

/// Whether the package will be active after the run and has no needless request. It differs from goesOn()
/// in the active package with a pending enable.
bool stays(const InstalledPackage& package) {
    return package.scheduled == (package.disabled ? Schedule::Enable : Schedule::None);
}

void handDownBundleRequests(const PackageDb& db) {
    for (const auto& member : db.packages) {
        if (!member->isMember()) continue;
        const InstalledPackage* bundle = db.find(member->bundle.name);
        if (bundle == nullptr) continue;
        switch (bundle->scheduled) {
            case Schedule::None: break;
            case Schedule::Uninstall: member->scheduled = Schedule::Uninstall; break;
            case Schedule::Enable:
                if (member->disabled) member->scheduled = Schedule::Enable;
                break;
            case Schedule::Disable:
                if (member->scheduled != Schedule::Uninstall) member->scheduled = Schedule::Disable;
                break;
        }
    }
}

void keepWhatIsNeeded(PackageDb& db, int verbosity) {
    for (const auto& package : db.packages)
        if (goesOn(*package)) requireDependencies(db, *package, verbosity);
}

/// Makes way for one package that goes on, or has it give way.
void settleConflictsOf(PackageDb& db, InstalledPackage& package, int verbosity) {
    for (const auto& other : db.packages) {
        if (other.get() == &package || !stays(*other)) continue;
        if (conflictsWith(package, *other)) {
            if (other->scheduled == Schedule::None) other->scheduled = Schedule::Disable;
        } else if (package.scheduled == Schedule::Enable && conflictsWith(*other, package)) {
            if (other->scheduled == Schedule::None) {
                other->scheduled = Schedule::Disable;
                continue;
            }
            if (verbosity != 0)
                db.warning("can not enable %s: %s conflicts with it", package.name.c_str(),
                           nameVersion(*other).c_str());
            package.scheduled = Schedule::None;
            return;
        }
    }
}

void settleConflicts(PackageDb& db, int verbosity) {
    for (const auto& package : db.packages)
        if (goesOn(*package)) settleConflictsOf(db, *package, verbosity);
}

/// Lets the package fall with a dependency that will not be met. True if that changed it.
bool fallsWith(const PackageDb& db, InstalledPackage& package, const PackageDependency& dependency) {
    const ProviderOutlook outlook = assessProviders(findProviders(db, dependency));
    const bool falls = (outlook == ProviderOutlook::Gone && package.scheduled != Schedule::Uninstall) ||
                       (outlook == ProviderOutlook::Inactive && goesOn(package));
    if (falls) package.scheduled = outlook == ProviderOutlook::Gone ? Schedule::Uninstall : Schedule::Disable;
    return falls;
}

/// One walk over all dependencies. True if it changed anything.
bool dropDependentsOnce(const PackageDb& db) {
    bool changed = false;
    for (const auto& package : db.packages)
        for (const PackageDependency& dependency : package->dependencies)
            changed |= fallsWith(db, *package, dependency);
    return changed;
}

/// Until a walk changes nothing. A request only moves towards disabling and removal here, so this ends, and
/// the order of the changes makes no difference.
void dropDependents(const PackageDb& db) {
    while (dropDependentsOnce(db)) {
    }
}

bool isLeftDisabled(const InstalledPackage& member) {
    return member.scheduled == Schedule::Disable || (member.disabled && member.scheduled == Schedule::None);
}

void followMembers(const PackageDb& db, InstalledPackage& bundle) {
    bool hasDisabledMember = false;
    for (const auto& member : db.packages) {
        if (member->isPlaceholder() || !member->isMember() || member->bundle.name != bundle.name) continue;
        if (goesOn(*member)) return;
        hasDisabledMember |= isLeftDisabled(*member);
    }
    if (!hasDisabledMember || !bundle.disabled)
        bundle.scheduled = Schedule::Uninstall;
    else if (bundle.scheduled == Schedule::Enable)
        bundle.scheduled = Schedule::None;
}

void letBundlesFollow(const PackageDb& db) {
    for (const auto& package : db.packages)
        if (package->isBundle && package->scheduled != Schedule::Uninstall) followMembers(db, *package);
}

/// True if the plan may stand. Otherwise every request has been dropped.
bool keepsAPackage(PackageDb& db, int verbosity) {
    if (db.packages.empty() || std::ranges::any_of(db.packages, [](const auto& package) { return goesOn(*package); }))
        return true;
    for (const auto& package : db.packages) package->scheduled = Schedule::None;
    if (verbosity != 0) db.error("can not uninstall or disable all packages");
    return false;
}

void uninstall(PackageDb& db, ChangeJournal& journal, InstalledPackage& package, int verbosity) {
    const std::string name = nameVersion(package);
    if (verbosity >= 2) db.setStatus("uninstalling " + name + "...");
    removePackage(journal, package);
    const auto record = db.release(package);
    if (verbosity >= 2) db.info("uninstalled %s", name.c_str());
}

void disable(PackageDb& db, ChangeJournal& journal, InstalledPackage& package, int verbosity) {
    const std::string name = nameVersion(package);
    if (verbosity != 0) db.setStatus("disabling " + name + "...");
    disablePackage(journal, package);
    if (verbosity != 0) db.info("disabled %s", name.c_str());
}

bool act(PackageDb& db, ChangeJournal& journal, int verbosity) {
    std::vector<InstalledPackage*> going;
    std::vector<InstalledPackage*> coming;
    for (const auto& package : db.packages) {
        if (package->scheduled == Schedule::Uninstall || package->scheduled == Schedule::Disable)
            going.push_back(package.get());
        if (package->scheduled == Schedule::Enable) coming.push_back(package.get());
    }
    selectPackages(db, coming, NO_DOWNGRADE, false);

    // From the last one: that puts a bundle ahead of its members.
    std::ranges::reverse(going);
    for (InstalledPackage* package : going) {
        if (package->scheduled == Schedule::Uninstall)
            uninstall(db, journal, *package, verbosity);
        else
            disable(db, journal, *package, verbosity);
    }
    enablePackages(journal, db, coming, verbosity != 0);
    return !going.empty() || !coming.empty();
}

}  // namespace

bool applySchedule(PackageDb& db, ChangeJournal& journal, int verbosity) {
    handDownBundleRequests(db);
    keepWhatIsNeeded(db, verbosity);
    settleConflicts(db, verbosity);
    dropDependents(db);
    letBundlesFollow(db);
    return keepsAPackage(db, verbosity) && act(db, journal, verbosity);
}
