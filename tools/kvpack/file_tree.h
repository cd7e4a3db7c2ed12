#pragma once

#include <string>

#include "kvpack/failure.h"
#include "kvpack/package_writer.h"

/// Writes PART_FILES with every regular file below a directory, in the order of the bytes of their paths,
/// each named by its path below it. Directories need no record: an install makes them as it needs them.
/// Anything else in the tree is refused, since an install would drop it.
[[nodiscard]] Failure writeFileTree(PackageWriter& writer, const std::string& directory);
