#pragma once

#include <string>
#include <vector>

#include "package/package_info.h"

class ChangeJournal;

/// The list files `deps`, `provides` and `conflicts` of a database record. One line for each entry, in
/// blank-separated words: name, lowest version, highest version, and in `provides` the priority, signed.
/// Versions are packed and unsigned decimal.

/// Appends the entries of a file. A missing file is an empty list. False at a malformed entry; those before
/// it stay. A line end is a blank like any other here.
[[nodiscard]] bool readDependencyFile(const std::string& path, std::vector<PackageDependency>& list, bool withPriority);

/// Stages a file with the entries. False, with errno set, if it could not be written.
[[nodiscard]] bool writeDependencyFile(ChangeJournal& journal, const std::string& path,
                                       const std::vector<PackageDependency>& entries, bool withPriority);
