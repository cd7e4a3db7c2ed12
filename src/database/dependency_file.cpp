#include "database/dependency_file.h"

#include <fstream>

#include "apply/change_journal.h"

bool readDependencyFile(const std::string& path, std::vector<PackageDependency>& list, bool withPriority) {
    std::ifstream file(path);
    for (PackageDependency entry; file >> entry.name;) {
        file >> entry.minVersion >> entry.maxVersion;
        if (withPriority) file >> entry.priority;
        if (!file) return false;
        list.push_back(entry);
    }
    return true;
}

bool writeDependencyFile(ChangeJournal& journal, const std::string& path, const std::vector<PackageDependency>& entries,
                         bool withPriority) {
    StagedFile file = journal.stageFile(path, 1024, 0);
    for (const PackageDependency& entry : entries) {
        file << entry.name << ' ' << entry.minVersion << ' ' << entry.maxVersion;
        if (withPriority) file << ' ' << entry.priority;
        file << '\n';
    }
    return static_cast<bool>(file.flush());
}
