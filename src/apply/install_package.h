#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "apply/change_journal.h"
#include "database/package_db.h"
#include "package/part_reader.h"
#include "planning/install_flags.h"

/// By package name, for each package whose state the user chose: whether it is disabled.
using CarriedStates = std::map<std::string, bool, std::less<>>;

/// What the installs of one run share.
struct InstallContext {
    PackageDb& db;
    ChangeJournal& journal;
    InstallFlags flags;                  ///< what the run may do to an installed package
    const CarriedStates& carriedStates;  ///< states that a new version takes over
};

/// What an install tells its caller about the file or stream that the package came in.
struct ImageTarget {
    /// The package's database directory if what the package came in is to be kept there as its image, else
    /// empty. Only told where `isStream` is set.
    std::string directory;
    bool bootImage = false;  ///< the image is to become "/flash/bootimage", with a link at its own place
    bool isStream = false;   ///< set by the caller: a stream may be kept for more than its image part
};

/// Installs the one package whose header the reader stands on into the journal: stages the removal of the
/// installed version, the new files, the record and the markers, and changes the records in memory.
/// Nothing on disk changes but for "/rw/CONVERT".
///
/// bundleEntry: the bundle that the package is a member of, as a member's record names it; null for a
///              package that stands alone.
///
/// Returns the name of the package that is installed now or was in place already; nothing on failure. That
/// has been reported, but for a header that cannot be read, a member named like its bundle, and a directory
/// that cannot be claimed. What was staged up to there stays: a journal with a failed install in it is not
/// to be committed.
std::optional<std::string> installPackage(const InstallContext& context, PartReader& reader,
                                          const PackageDependency* bundleEntry, ImageTarget& imageTarget);
