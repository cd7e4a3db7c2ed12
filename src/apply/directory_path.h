#pragma once

#include <string>

/// The directory part of a path, as the system's dirname gives it once trailing slashes are gone: the
/// parent of "/flash/a/" is "/flash". The parent of "/" and of a bare name is ".".
std::string parentPath(const std::string& path);

/// The path itself, or its longest parent that is not too long for any directory. Going up to there step by
/// step would take time by the square of the length.
std::string possibleParent(const std::string& path);

/// Makes a directory and whichever of its parents are missing. A failure shows in what is not there.
void makeDirs(const std::string& path);
