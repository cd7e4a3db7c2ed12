#pragma once

#include <optional>
#include <span>

#include "run/run_options.h"

/// Reads the arguments, without the program's name, from left to right into `options`. Some of them act on
/// the spot: "--commit", "--cancel" and one that is not understood end the process, and what stands behind
/// them is not looked at. Returns the exit code in that case, and nothing if the run is to go on.
std::optional<int> readCommandLine(std::span<char* const> arguments, RunOptions& options);
