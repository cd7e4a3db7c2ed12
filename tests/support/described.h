#pragma once

#include <iostream>
#include <string>

#include "database/package_db.h"

/// A record told in a few words: its name, and then, in any order, "=N" version N, "tN" build time N, "off"
/// disabled, "user", "bundle", a request "uninstall", "enable" or "disable", "@x" member of bundle x, and for
/// the lists ">x" needs x, "<x" provides x, "!x" conflicts with x, each with ":lowest", ":lowest:highest" or
/// ":lowest:highest:priority" behind it. Version 7.0 (final), build time 0 and active, where nothing else is said.
InstalledPackage described(const std::string& text);

/// A bundle that holds these members.
PackageInfo holding(const std::string& text, std::vector<PackageInfo> members);

/// Adds a record to a database.
InstalledPackage& addDescribed(PackageDb& db, const std::string& text);

/// Calls `operation` with standard output kept off the test's own.
template <class Operation>
auto silently(PackageDb& db, Operation operation) {
    db.messages.clear();
    std::cout.setstate(std::ios::badbit);
    auto result = operation();
    std::cout.clear();
    return result;
}
