#pragma once

#include <iosfwd>
#include <string>

#include "kvpack/failure.h"

/// How a command that reads a package tells what it found.
enum class Form { Text, Json };

/// Prints every part of a package or bundle, and of each signature whether it holds under the keys that
/// this build trusts. Fails for a file that cannot be read; a damaged one is shown as far as it goes.
[[nodiscard]] Failure showPackage(const std::string& path, Form form, std::ostream& out);
