#pragma once

#include "run/run_options.h"

/// The common start of every mode that works on the package database: enters the root directory, loads the
/// database, and goes on in the mode that the options ask for. Returns the exit code of the process.
int runStartUp(const RunOptions& options);
