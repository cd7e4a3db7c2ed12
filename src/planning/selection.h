#pragma once

#include <cstddef>
#include <vector>

#include "console/reporter.h"
#include "package/package_info.h"

/// Limit of a selection in the normal direction: the newest package of a name wins. Any other limit is the
/// lowest version allowed in the downgrade direction, in which the oldest one wins.
constexpr PackageVersion NO_DOWNGRADE = 0xFFFFFFFF;

/// Chooses among packages and orders what is left. Out goes what loses against another one of its name, or
/// of the name of a member, and in the downgrade direction what is below the limit; packages equal in
/// version and build time put each other out, but a bundle beats a single package that it contains. Of the
/// rest each comes after everything that it needs, and after everything that would conflict with it; a
/// cycle is broken somewhere. Returns the indices of what is left, in that order.
///
/// A package below the limit gives a warning; the others that lose to a better one give theirs if `report`.
std::vector<std::size_t> selectIndices(Reporter& reporter, const std::vector<const PackageInfo*>& packages,
                                       PackageVersion limit, bool report);

/// The same, leaving the chosen packages in the list.
template <class Package>
void selectPackages(Reporter& reporter, std::vector<Package*>& packages, PackageVersion limit, bool report) {
    std::vector<Package*> selected;
    for (const std::size_t index : selectIndices(reporter, {packages.begin(), packages.end()}, limit, report))
        selected.push_back(packages[index]);
    packages = std::move(selected);
}
