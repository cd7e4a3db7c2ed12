#pragma once

#include "database/package_db.h"
#include "planning/install_flags.h"

/// How the candidate stands against the installed system and the device. Changes nothing. Tells the user,
/// at most once, the first reason against it that `permitted` does not waive.
InstallFlags checkInstallEligibility(PackageDb& db, const PackageInfo& candidate, InstallFlags permitted);
