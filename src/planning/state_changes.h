#pragma once

#include "apply/change_journal.h"
#include "database/package_db.h"

/// Settles the requests in the records' `scheduled` fields into one plan in which what stays active keeps
/// what it needs, and stages that plan: removals and disables, then enables. The records change at once,
/// and those of removed packages are deleted. A plan that would leave no active package is refused as a
/// whole.
///
/// verbosity: 0, nothing is reported; 1, all but removals; 2, removals too.
///
/// True when something was staged or changed.
bool applySchedule(PackageDb& db, ChangeJournal& journal, int verbosity);
