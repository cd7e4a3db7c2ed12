#pragma once

#include <string>

#include <sys/stat.h>

/// Whether something stands at the path. A symbolic link counts as what it points to, so one that dangles
/// is nothing.
inline bool fileExists(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0;
}
