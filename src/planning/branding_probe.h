#pragma once

#include <string>

/// Whether a package file named "branding" may replace the running branding. A protected branding holds a
/// marker file, and must not be replaced by one without it. When the running one is protected, the image in
/// the candidate is mounted, searched and unmounted again. A candidate without an image, and one that could
/// not be searched, may not; the system's reason for the latter stands on standard error.
///
/// path: full path of the candidate, which is not changed.
bool brandingStaysProtected(const std::string& path);
