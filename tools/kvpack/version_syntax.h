#pragma once

#include <optional>
#include <string_view>

#include "package/package_version.h"

/// The version that versionText() prints as this text; nothing if there is none. Of the two that print as
/// 7.2, the final release and the development build 0, it is the final release.
std::optional<PackageVersion> parseVersion(std::string_view text);
