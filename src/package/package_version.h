#pragma once

#include <cstdint>
#include <string>

/// A packed version: major, minor, stage and patch from the top byte down. The stage is a letter: 'a' for
/// an alpha, 'b' for a beta, 'c' for a release candidate, 'f' for a final release. Below 'a' it is no stage
/// but the upper half of a 16-bit build number of a development build. Versions compare as plain unsigned
/// numbers, and so a development build sorts below the alpha of its version.
using PackageVersion = std::uint32_t;

constexpr PackageVersion majorVersion(PackageVersion version) { return version >> 24; }

/// The version as people write it: 7.1beta3, 6.48.2, 6.48_ab5.
std::string versionText(PackageVersion version);
