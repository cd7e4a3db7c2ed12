#pragma once

#include "database/package_db.h"
#include "run/run_options.h"

/// The scheduled upgrade, from the requests that wait to the hand-over to the boot-stage program. Returns the
/// exit code: 28 (ENOSPC) when the changes do not fit on the disk, else 0, also for a run that failed, which
/// changes nothing and tells on the console and in the log.
int runScheduledMode(PackageDb& db, const RunOptions& options);
