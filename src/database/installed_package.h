#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "package/package_info.h"

/// The pending change of a package in this run. The word is that of its `schedule` file.
enum class Schedule : std::uint32_t {
    None = 0,
    Uninstall = 1,  ///< "uninstall"
    Enable = 2,     ///< "enable": make a disabled package active
    Disable = 3,    ///< "disable": make an active package disabled
};

/// The record of a package in the database.
struct InstalledPackage : PackageInfo {
    using PackageInfo::PackageInfo;

    /// Where the database lies: one directory for each package.
    static constexpr const char* root = "/flash/var/pdb/";

    /// The directory of this package's files in the database, with a trailing slash.
    std::string directory() const { return root + name + '/'; }

    /// Whether it belongs to a bundle.
    bool isMember() const { return !bundle.name.empty(); }

    /// Whether it is no package but a note that a bundle leaves for the rest of the run, to keep one of its
    /// members from becoming active by a conflict. Notes never reach the disk.
    bool isConflictNote() const { return name.empty(); }

    /// Completes a record whose `version` is 0 from the meta files in its directory, and reads the state
    /// of any record: `disabled`, `user` and the request in `scheduled`. Damage to the meta files makes the
    /// package due for removal; nothing is reported.
    void loadState();

    std::set<std::string> files;  ///< paths that the package put down, each with a leading "/"
    PackageDependency bundle;     ///< its name is empty for a package that stands alone
    bool disabled = false;        ///< installed but not active
    bool user = false;            ///< the present state was asked for, and not derived by the planner
    Schedule scheduled = Schedule::None;
};
