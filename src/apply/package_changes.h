#pragma once

#include <vector>

#include "apply/change_journal.h"
#include "console/reporter.h"
#include "database/installed_package.h"

/// What packages mean to the journal. Nothing here reports a failure.

/// Stages the removal of an installed package: its files, its database directory, and the boot image if the
/// package brought it and nothing else links to it. Clears `files` and `scheduled` of the record. To come
/// before claimPackageDir() of a package that takes its place.
void removePackage(ChangeJournal& journal, InstalledPackage& package);

/// Whether the database directory of the package may hold a new record. A staged deletion of it is dropped,
/// so that only its files are replaced; any other plan for it, and a plain file in its place, is a no.
[[nodiscard]] bool claimPackageDir(ChangeJournal& journal, const InstalledPackage& package);

/// Stages the enabling of a package and marks its record so.
void enablePackage(ChangeJournal& journal, InstalledPackage& package);

/// enablePackage() for each of the list in order; if `verbose`, the user hears of each.
void enablePackages(ChangeJournal& journal, Reporter& reporter, const std::vector<InstalledPackage*>& packages,
                    bool verbose);

/// Stages the disabling of a package and marks its record so.
void disablePackage(ChangeJournal& journal, InstalledPackage& package);
