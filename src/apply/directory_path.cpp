#include "apply/directory_path.h"

#include <cerrno>
#include <climits>

#include <libgen.h>
#include <sys/stat.h>

std::string parentPath(const std::string& path) {
    std::string copy = path;
    while (copy.ends_with('/')) copy.pop_back();
    return ::dirname(copy.data());
}

std::string possibleParent(const std::string& path) {
    return path.size() < PATH_MAX ? path : parentPath(path.substr(0, PATH_MAX) + 'x');
}

void makeDirs(const std::string& path) {
    if (path.size() > PATH_MAX) return makeDirs(possibleParent(path));
    if (::mkdir(path.c_str(), 0777) == 0 || errno == EEXIST) return;
    // Ends at "/" or ".", which exist.
    makeDirs(parentPath(path));
    (void)::mkdir(path.c_str(), 0777);
}
