#include "support/described.h"

#include <sstream>

namespace {

PackageDependency entryFrom(const std::string& text) {
    std::istringstream fields(text);
    PackageDependency entry;
    char colon = 0;
    std::getline(fields, entry.name, ':');
    fields >> entry.minVersion >> colon >> entry.maxVersion >> colon >> entry.priority;
    return entry;
}

void applyWord(InstalledPackage& package, const std::string& word) {
    const std::string rest = word.substr(1);
    if (word == "off") package.disabled = true;
    if (word == "user") package.user = true;
    if (word == "bundle") package.isBundle = true;
    if (word == "uninstall") package.scheduled = Schedule::Uninstall;
    if (word == "enable") package.scheduled = Schedule::Enable;
    if (word == "disable") package.scheduled = Schedule::Disable;
    if (word[0] == '=') package.version = static_cast<PackageVersion>(std::stoul(rest));
    if (word[0] == 't') package.buildTime = static_cast<std::uint32_t>(std::stoul(rest));
    if (word[0] == '@') package.bundle.name = rest;
    if (word[0] == '>') package.dependencies.push_back(entryFrom(rest));
    if (word[0] == '<') package.provides.push_back(entryFrom(rest));
    if (word[0] == '!') package.conflicts.push_back(entryFrom(rest));
}

}  // namespace

InstalledPackage described(const std::string& text) {
    std::istringstream words(text);
    std::string word;
    words >> word;
    InstalledPackage package(word);
    package.version = 0x07006600;
    while (words >> word) applyWord(package, word);
    return package;
}

PackageInfo holding(const std::string& text, std::vector<PackageInfo> members) {
    PackageInfo bundle = described(text);
    bundle.isBundle = true;
    bundle.members = std::move(members);
    return bundle;
}

InstalledPackage& addDescribed(PackageDb& db, const std::string& text) {
    return *db.packages.emplace_back(std::make_unique<InstalledPackage>(described(text)));
}
