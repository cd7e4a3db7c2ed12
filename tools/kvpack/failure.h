#pragma once

#include <optional>
#include <string>

/// Why something could not be done, in one line for the user; nothing when it was done.
using Failure = std::optional<std::string>;
