#include "planning/requirements.h"

#include <algorithm>
#include <array>

#include "planning/relations.h"
#include "planning/selection.h"

namespace {

/// By `Schedule`.
constexpr std::array VERBS = {"", "uninstall", "enable", "disable"};

/// One search for what a package needs. It ends on any records: the needs of a package are followed unless
/// it stands already on the chain that led to it, as with a bundle that damage made its own member.
class RequirementSearch {
public:
    RequirementSearch(PackageDb& db, int verbosity) : db_(db), verbosity_(verbosity) {}

    void requireNeedsOf(const InstalledPackage& package) {
        if (std::ranges::find(chain_, &package) != chain_.end()) return;
        chain_.push_back(&package);
        followNeedsOf(package);
        chain_.pop_back();
    }

private:
    void followNeedsOf(const InstalledPackage& package) {
        if (package.isMember())
            if (InstalledPackage* bundle = db_.find(package.bundle.name)) require(*bundle, package);
        for (const PackageDependency& dependency : package.dependencies) {
            const auto providers = findProviders(db_, dependency);
            if (assessProviders(providers) == ProviderOutlook::Met) continue;
            if (providers.empty()) return;  // nothing can be done for it here
            auto best = providers;
            selectPackages(db_, best, NO_DOWNGRADE, false);
            require(best.empty() ? *providers.front() : *best.back(), package);
        }
    }

    void require(InstalledPackage& needed, const InstalledPackage& dependent) {
        if (needed.scheduled == Schedule::Uninstall || needed.scheduled == Schedule::Disable) {
            if (verbosity_ != 0)
                db_.warning("can not %s %s: %s depends on it", VERBS[static_cast<std::size_t>(needed.scheduled)],
                            nameVersion(needed).c_str(), dependent.name.c_str());
            needed.scheduled = Schedule::None;
        } else if (needed.disabled) {
            needed.scheduled = Schedule::Enable;
        } else {
            return;
        }
        requireNeedsOf(needed);
    }

    PackageDb& db_;
    int verbosity_;
    std::vector<const InstalledPackage*> chain_;
};

}  // namespace

bool goesOn(const InstalledPackage& package) {
    return package.scheduled == Schedule::Enable || (package.scheduled == Schedule::None && !package.disabled);
}

ProviderOutlook assessProviders(const std::vector<InstalledPackage*>& providers) {
    bool isInactive = false;
    for (const InstalledPackage* provider : providers) {
        if (goesOn(*provider)) return ProviderOutlook::Met;
        isInactive |= provider->disabled || provider->scheduled == Schedule::Disable;
    }
    return isInactive ? ProviderOutlook::Inactive : ProviderOutlook::Gone;
}

void requireDependencies(PackageDb& db, const InstalledPackage& package, int verbosity) {
    RequirementSearch(db, verbosity).requireNeedsOf(package);
}
