#pragma once

#include "apply/change_journal.h"
#include "console/reporter.h"
#include "database/installed_package.h"

/// Stages the database record of a package: its meta files, unless its image describes it, and the two
/// files of its state. Of an older record, state files and `bundle` that would now be wrong are noted for
/// deletion; `provides` and `conflicts` stay where the new version brings none. False when a meta file could
/// not be written, which has been reported then; what was staged before stays.
[[nodiscard]] bool writePackageRecord(const InstalledPackage& package, ChangeJournal& journal, Reporter& reporter);
