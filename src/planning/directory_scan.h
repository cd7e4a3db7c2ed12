#pragma once

#include <memory>
#include <string>
#include <vector>

#include "database/package_db.h"
#include "planning/package_file.h"

/// Appends the package files in a directory that are sound and meant for this device, in the order in which
/// the directory gives them: those with a name that ends in ".kvp" or ".dpk" and does not begin with ".".
/// Each other one of these is reported and left out. A directory that cannot be opened adds nothing.
///
/// directory: its path, with a trailing slash.
void scanPackageDirectory(const std::string& directory, std::vector<std::unique_ptr<PackageFile>>& candidates,
                          PackageDb& db);
