#include "planning/selection.h"

#include <algorithm>
#include <string>

#include "planning/relations.h"

namespace {

using PackageList = std::vector<const PackageInfo*>;

bool sharesName(const PackageInfo& a, const PackageInfo& b) { return hasName(a, b.name) || hasName(b, a.name); }

/// Whether `package` stays in against every other one, those included that have been put out themselves.
bool prevails(Reporter& reporter, const PackageInfo& package, const PackageList& packages, PackageVersion limit,
              bool report) {
    const bool downgrading = limit != NO_DOWNGRADE;
    if (downgrading && package.version < limit) {
        reporter.warning("ommitting package %s: not allowed", nameVersion(package).c_str());
        return false;
    }
    for (const PackageInfo* other : packages) {
        if (other == &package || !sharesName(package, *other)) continue;
        const int order = comparePackages(*other, package);
        const int better = downgrading ? -order : order;
        if (better > 0) {
            if (report)
                reporter.warning("omitting package %s: %s package is already provided", nameVersion(package).c_str(),
                                 downgrading ? "older" : "newer");
            return false;
        }
        if (better == 0 && (!package.isBundle || other->isBundle)) return false;
    }
    return true;
}

}  // namespace

std::vector<std::size_t> selectIndices(Reporter& reporter, const PackageList& packages, PackageVersion limit,
                                       bool report) {
    std::vector<std::size_t> ordered;
    std::vector<std::size_t> prevailing;
    for (std::size_t i = 0; i < packages.size(); ++i)
        if (prevails(reporter, *packages[i], packages, limit, report)) prevailing.push_back(i);
    for (const std::size_t i : prevailing) {
        const auto hasToPrecede = [&](std::size_t earlier) {
            return dependsOn(*packages[i], *packages[earlier]) || conflictsWith(*packages[earlier], *packages[i]);
        };
        // Right behind the last one that has to precede it; at the very start if there is none.
        const auto last = std::find_if(ordered.rbegin(), ordered.rend(), hasToPrecede);
        ordered.insert(last.base(), i);
    }
    return ordered;
}
