#pragma once

#include <vector>

#include "database/package_db.h"

/// How the providers of a dependency will stand after the run. The values are those of the `Schedule` that
/// a dependent gets for them.
enum class ProviderOutlook {
    Met = 0,       ///< one of them will be active
    Gone = 1,      ///< none is left
    Inactive = 3,  ///< some are left, but disabled
};

/// Whether the package will be active after the run as its state stands now.
bool goesOn(const InstalledPackage& package);

ProviderOutlook assessProviders(const std::vector<InstalledPackage*>& providers);

/// Makes sure that what the package needs, its bundle included, stays or becomes active: requests to remove
/// or disable it are dropped, with a warning unless `verbosity` is 0, and what is disabled is scheduled to
/// be enabled. So on for the needs of each. A need without any provider ends the search for this package.
void requireDependencies(PackageDb& db, const InstalledPackage& package, int verbosity);
