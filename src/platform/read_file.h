#pragma once

#include <cstddef>
#include <string>

namespace dx {

/// The first `limit` bytes of a file; empty if it cannot be read.
std::string readFile(const std::string& path, std::size_t limit);

}  // namespace dx
