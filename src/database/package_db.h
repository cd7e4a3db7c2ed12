#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "console/reporter.h"
#include "database/installed_package.h"

/// The records of all installed packages, rebuilt from the file system at every start, and the channel to
/// the user, which is the same object.
class PackageDb : public Reporter {
public:
    /// The one object of the process, made empty at the first call and never freed.
    static PackageDb& instance();

    /// Fills the database, with whatever requests other services left in "/ram/pdb/". A database that
    /// cannot be opened gives a warning and stays empty. To be called once, before anything else.
    void load(bool isQuiet, const std::string& archName);

    /// Index of the first record of exactly this name; -1 if there is none.
    std::ptrdiff_t indexOf(std::string_view name) const;

    /// The record at that index; null if there is none.
    InstalledPackage* find(std::string_view name) const;

    /// Takes a record out of the database, which has to hold it. The caller owns it now.
    std::unique_ptr<InstalledPackage> release(const InstalledPackage& package);

    std::string arch;  ///< architecture name of the running system

    /// In load order, never sorted: the members of a bundle ahead of the bundle. The database owns them.
    std::vector<std::unique_ptr<InstalledPackage>> packages;

private:
    bool loadImages(const std::string& imageRoot, bool flat);
};
