#include "run/scheduled_mode.h"

int runScheduledMode(PackageDb& /*db*/, const RunOptions& /*options*/) { return 0; }
