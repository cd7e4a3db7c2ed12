#include "database/installed_package.h"

#include <algorithm>
#include <cctype>
#include <fstream>

#include "database/dependency_file.h"

namespace {

/// The name under which other services leave a request for the package.
std::string filteredName(std::string name) {
    std::erase_if(name, [](unsigned char c) { return c != '-' && std::isalnum(c) == 0; });
    return name;
}

void loadMetaFiles(InstalledPackage& package) {
    const std::string directory = package.directory();

    std::ifstream version(directory + "version");
    bool damaged = !(version >> package.version >> package.buildTime);
    damaged |= !readDependencyFile(directory + "deps", package.dependencies, false);
    damaged |= !readDependencyFile(directory + "provides", package.provides, true);
    damaged |= !readDependencyFile(directory + "conflicts", package.conflicts, false);

    std::ifstream bundle(directory + "bundle");
    if (std::string name; bundle >> name) {
        // Its bundle has no image on flash, or it would have come from there.
        package.bundle = {.name = name};
        damaged = true;
    }
    if (damaged) package.scheduled = Schedule::Uninstall;

    std::ifstream files(directory + "files");
    package.isBundle = !files.is_open();
    for (std::string line; files.good();) {
        std::getline(files, line);
        if (line.empty()) continue;
        package.files.insert(line.starts_with('/') ? line : '/' + line);
    }
}

void loadRequest(InstalledPackage& package) {
    std::ifstream file("/ram/pdb/" + filteredName(package.name) + "/schedule");
    std::string word;
    file >> word;
    if (word == "uninstall") package.scheduled = Schedule::Uninstall;
    if (word == "enable") package.scheduled = Schedule::Enable;
    if (word == "disable") package.scheduled = Schedule::Disable;
    if (word == "enable" || word == "disable") package.user = true;
}

}  // namespace

void InstalledPackage::loadState() {
    if (version == 0) loadMetaFiles(*this);

    std::ifstream disabledFile(directory() + "disabled");
    disabled = disabledFile.is_open();
    if (disabled) {
        std::string word;
        std::getline(disabledFile, word);
        user = word != "auto";
    } else {
        user = std::ifstream(directory() + "enabled").is_open();
    }
    if (!isPlaceholder()) loadRequest(*this);
}
