#pragma once

#include <string>

#include "kvpack/failure.h"
#include "kvpack/signing_keys.h"

/// Writes a package again with other signatures in the place of those that it has, each in the form that it
/// had. All else stays byte for byte. `output` may be the package itself. Fails for a file that is cut off or
/// has no signature, and writes nothing then.
[[nodiscard]] Failure signPackage(const std::string& path, const SigningKeys& keys, const std::string& output);
