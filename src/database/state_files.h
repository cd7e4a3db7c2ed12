#pragma once

#include "apply/change_journal.h"
#include "database/installed_package.h"

/// Stages the files `disabled` and `enabled` as `disabled` and `user` of the package call for. A failure
/// shows in what is not there after the commit.
void writeStateFiles(const InstalledPackage& package, ChangeJournal& journal);
