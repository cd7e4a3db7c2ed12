#include "planning/relations.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace {

int compareVersions(const PackageInfo& a, const PackageInfo& b) {
    const auto left = std::tie(a.version, a.buildTime);
    const auto right = std::tie(b.version, b.buildTime);
    return left < right ? -1 : left > right ? 1 : 0;
}

/// The first entry or package of this name; null if there is none.
template <class Named>
const Named* findNamed(const std::vector<Named>& list, std::string_view name) {
    const auto found = std::ranges::find(list, name, &Named::name);
    return found == list.end() ? nullptr : &*found;
}

/// What the provides lists say of a conflict; nothing if they do not touch each other.
std::optional<bool> providersConflict(const PackageInfo& a, const PackageInfo& b) {
    // With a priority of 0 or more, b stands in for a.
    if (const auto* entry = findNamed(b.provides, a.name)) return entry->priority < 0;
    for (const PackageDependency& own : a.provides) {
        if (own.name == b.name) return own.priority >= 0;
        // At equal priorities two providers of one thing live side by side.
        if (const auto* other = findNamed(b.provides, own.name)) return own.priority > other->priority;
    }
    return std::nullopt;
}

}  // namespace

bool satisfiesDependency(const PackageInfo& package, const PackageDependency& dependency) {
    return package.name == dependency.name && package.version >= dependency.minVersion &&
           (dependency.maxVersion == 0 || package.version <= dependency.maxVersion);
}

bool providesDependency(const PackageInfo& package, const PackageDependency& dependency) {
    return std::ranges::any_of(package.provides, [&](const PackageDependency& entry) {
        return entry.name == dependency.name &&
               (entry.minVersion == 0 || dependency.maxVersion == 0 || entry.minVersion <= dependency.maxVersion) &&
               (entry.maxVersion == 0 || entry.maxVersion >= dependency.minVersion);
    });
}

std::vector<InstalledPackage*> findProviders(const PackageDb& db, const PackageDependency& dependency) {
    std::vector<InstalledPackage*> providers;
    for (const auto& package : db.packages)
        if (!package->isPlaceholder() &&
            (satisfiesDependency(*package, dependency) || providesDependency(*package, dependency)))
            providers.push_back(package.get());
    return providers;
}

bool hasName(const PackageInfo& package, std::string_view name) {
    return package.name == name || findNamed(package.members, name) != nullptr;
}

int comparePackages(const PackageInfo& a, const PackageInfo& b) {
    if (a.name == b.name) return compareVersions(a, b);
    if (const auto* member = findNamed(a.members, b.name)) return compareVersions(*member, b);
    if (const auto* member = findNamed(b.members, a.name)) return compareVersions(a, *member);
    return 0;
}

bool dependsOn(const PackageInfo& a, const PackageInfo& b) {
    const auto isMet = [&](const PackageDependency& entry) {
        return satisfiesDependency(b, entry) || providesDependency(b, entry);
    };
    return std::ranges::any_of(a.dependencies, isMet) ||
           std::ranges::any_of(b.members, [&](const PackageInfo& member) { return dependsOn(a, member); }) ||
           std::ranges::any_of(a.members, [&](const PackageInfo& member) { return dependsOn(member, b); });
}

bool conflictsWith(const PackageInfo& a, const PackageInfo& b) {
    if (a.isPlaceholder() || b.isPlaceholder()) return false;
    if (std::ranges::any_of(a.conflicts, [&](const auto& entry) { return satisfiesDependency(b, entry); })) return true;
    if (const auto verdict = providersConflict(a, b)) return *verdict;
    return std::ranges::any_of(a.conflicts, [&](const auto& entry) { return providesDependency(b, entry); }) ||
           findNamed(b.members, a.name) != nullptr ||
           std::ranges::any_of(a.members, [&](const PackageInfo& member) { return conflictsWith(member, b); });
}

const InstalledPackage* findConflict(const PackageDb& db, const PackageInfo& package) {
    for (const auto& record : db.packages)
        if (!record->disabled && conflictsWith(*record, package)) return record.get();
    return nullptr;
}

InstalledPackage* findActiveOrLast(const PackageDb& db, std::string_view name) {
    const PackageDependency anyVersion = {.name = std::string(name)};
    InstalledPackage* last = nullptr;
    for (const auto& package : db.packages) {
        if (package->name != name && !providesDependency(*package, anyVersion)) continue;
        if (!package->disabled) return package.get();
        last = package.get();
    }
    return last;
}
