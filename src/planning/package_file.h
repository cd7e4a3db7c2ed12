#pragma once

#include <string>

#include "package/package_info.h"

/// A candidate: a package file found in a scan. Of a bundle it is the bundle's header, with its members.
struct PackageFile : PackageInfo {
    explicit PackageFile(std::string filePath) : PackageInfo(""), path(std::move(filePath)) {}

    std::string path;
};
