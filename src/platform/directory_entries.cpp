#include "platform/directory_entries.h"

#include <memory>

#include <dirent.h>

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { (void)::closedir(directory); }
};

}  // namespace

std::optional<std::vector<std::string>> directoryEntries(const std::string& path) {
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(path.c_str()));
    if (!directory) return std::nullopt;
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(directory.get())) names.emplace_back(entry->d_name);
    return names;
}
