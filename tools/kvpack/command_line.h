#pragma once

#include <iosfwd>

/// The commands of kvpack. Returns the exit code: 0; 1 when a file could not be read or written; 2 for bad
/// arguments. The reason goes to `err` in one line.
int runKvpack(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
