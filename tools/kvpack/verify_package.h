#pragma once

#include <iosfwd>
#include <string>

#include "kvpack/key_folder.h"
#include "kvpack/show_package.h"

/// Checks the structure and the signatures of a package or bundle as an install would, prints what it found
/// and, range by range, which bytes of the file the signatures cover. Fails for a file that cannot be read,
/// and for one with anything wrong: the failure names the first fault of the file and its offset.
[[nodiscard]] Failure verifyPackage(const std::string& path, const PublicKeys& keys, Form form, std::ostream& out);
