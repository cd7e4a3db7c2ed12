#pragma once

#include <string_view>
#include <vector>

#include "database/package_db.h"

/// The relations between packages on which all planning rests. Names compare byte for byte and versions as
/// plain numbers.
///
/// In `dependencies` and `conflicts` an entry is a range: the version is at least `minVersion` and, unless
/// `maxVersion` is 0, at most `maxVersion`. In `provides` it says that the package stands in for that name
/// in that range, of which 0 leaves either side open.

/// Whether the package has the entry's name, and a version in its range.
bool satisfiesDependency(const PackageInfo& package, const PackageDependency& dependency);

/// Whether the package stands in for the entry's name, in a range that overlaps the entry's.
bool providesDependency(const PackageInfo& package, const PackageDependency& dependency);

/// Every record that meets the dependency in either way, in database order. Disabled packages and those due
/// for removal are among them, placeholders are not.
std::vector<InstalledPackage*> findProviders(const PackageDb& db, const PackageDependency& dependency);

/// Whether the package or one of its members has the name.
bool hasName(const PackageInfo& package, std::string_view name);

/// 1 if a is the newer, -1 if b is, by version and then by build time; a bundle is compared by the member
/// that has the other's name. 0 if they are equal, or share no name.
int comparePackages(const PackageInfo& a, const PackageInfo& b);

/// Whether a needs b, or a member of the one a member of the other.
bool dependsOn(const PackageInfo& a, const PackageInfo& b);

/// Whether a, which is there, conflicts with b, which comes. Not symmetric. Of two packages that provide
/// the same name, the one of the higher priority is in conflict with the other.
bool conflictsWith(const PackageInfo& a, const PackageInfo& b);

/// The first active record that conflicts with the package; null if there is none.
const InstalledPackage* findConflict(const PackageDb& db, const PackageInfo& package);

/// The record that stands for a name, its own or one that it provides: the first active one, else the last
/// disabled one, else null.
InstalledPackage* findActiveOrLast(const PackageDb& db, std::string_view name);
