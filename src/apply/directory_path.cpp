#include "apply/directory_path.h"

#include <cerrno>

#include <libgen.h>
#include <sys/stat.h>

std::string parentPath(const std::string& path) {
    std::string copy = path;
    while (copy.ends_with('/')) copy.pop_back();
    return ::dirname(copy.data());
}

void makeDirs(const std::string& path) {
    // For anything but a missing parent there is no help further up: one path can have thousands of parents.
    if (::mkdir(path.c_str(), 0777) == 0 || errno != ENOENT) return;
    // Ends at "/" or ".", which exist.
    makeDirs(parentPath(path));
    (void)::mkdir(path.c_str(), 0777);
}
