#pragma once

#include "database/package_db.h"
#include "run/run_options.h"

/// Installs one package or bundle from standard input and applies the change at once. The stream is spooled
/// to a file as it is read, and that becomes the package's image where one is needed.
///
/// Returns the exit code: 0 to 3 as InstallResult, 1 also when the image could not be written, -1 when it
/// could not be opened.
int runStandardInputMode(PackageDb& db, const RunOptions& options);
