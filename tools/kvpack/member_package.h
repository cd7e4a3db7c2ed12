#pragma once

#include <string>

#include "kvpack/failure.h"
#include "kvpack/package_writer.h"

/// Appends the parts of a package file, from its first part through its signature, to a bundle.
///
/// usesSha256: whether a member before this one switched the running digest to SHA-256. There is no way
///             back in one stream, so the signature of a member without the marker would not hold behind
///             one with it.
///
/// Fails for a file that is no single signed package, or that has a part behind its signature.
[[nodiscard]] Failure appendMember(PackageWriter& writer, const std::string& bundleName, const std::string& path,
                                   bool& usesSha256);
