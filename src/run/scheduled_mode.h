#pragma once

#include "database/package_db.h"
#include "run/run_options.h"

/// The scheduled upgrade. Returns the exit code.
int runScheduledMode(PackageDb& db, const RunOptions& options);
