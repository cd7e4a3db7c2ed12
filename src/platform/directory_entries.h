#pragma once

#include <optional>
#include <string>
#include <vector>

/// The names in a directory, "." and ".." among them, in the order in which the file system gives them.
/// Nothing if the directory cannot be opened.
std::optional<std::vector<std::string>> directoryEntries(const std::string& path);
