#pragma once

#include <iosfwd>
#include <string>

#include "kvpack/show_package.h"

/// The files of a package: those that an install writes. In a bundle, the files of each member stand below its
/// name. Both fail for a file that is no package, or is damaged as far as its files are concerned; neither looks
/// at the signature.

/// Prints one line for each file: permission bits, size in bytes, name.
[[nodiscard]] Failure listPackageFiles(const std::string& path, Form form, std::ostream& out);

/// Writes the files into a directory that must not exist yet. It appears when it is whole, or not at all.
/// Set-id bits do not come along, as nobody has vouched for the package.
[[nodiscard]] Failure extractPackageFiles(const std::string& path, const std::string& directory);
