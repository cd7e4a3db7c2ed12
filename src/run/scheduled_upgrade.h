#pragma once

#include <vector>

#include "apply/change_journal.h"
#include "database/package_db.h"
#include "planning/install_flags.h"

/// Finds the candidates in the package directories, chooses among them, installs them into the journal, and
/// checks that nothing that was in use has gone missing. Nothing on flash changes but for candidates that ask
/// to be discarded and the log, which is taken over when there is any candidate.
///
/// journal: may hold what state changes have staged already. flags: what the run may do to installed packages;
///          a request in "/ram/DOWNGRADE" adds to it here.
///
/// Returns what was installed, in order. Nothing if there was nothing to do, and also if the run failed: then
/// the user has been told, and the journal is cancelled.
std::vector<PackageInfo> runScheduledUpgrade(PackageDb& db, ChangeJournal& journal, InstallFlags flags);
