#include "console/package_table.h"

#include <array>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <string>

#include "database/package_db.h"
#include "platform/kestrion.h"

namespace {

constexpr int NAME_WIDTH = 16;
constexpr int VERSION_WIDTH = 13;
constexpr int DATE_WIDTH = 20;
constexpr int NOTE_WIDTH = 40;
constexpr std::size_t RULE_WIDTH = 94;

/// `seconds` since 1970 as a date in UTC.
std::string dateText(std::uint32_t seconds) {
    const std::time_t time = seconds;
    std::tm date{};
    if (::gmtime_r(&time, &date) == nullptr) return "";
    std::array<char, 128> text;
    return {text.data(), std::strftime(text.data(), text.size(), "%b/%d/%Y %H:%M:%S", &date)};
}

}  // namespace

void printPackageTable(const PackageDb& db) {
    using std::setw;
    std::cout << setw(NAME_WIDTH) << "Name"
              << "    " << setw(VERSION_WIDTH) << "Version" << ' ' << setw(DATE_WIDTH) << "Built" << setw(NOTE_WIDTH)
              << "Note" << '\n'
              << std::string(RULE_WIDTH, '-') << '\n';
    for (const auto& package : db.packages)
        std::cout << setw(NAME_WIDTH) << package->name << ' ' << (package->disabled ? "X" : " ")
                  << (package->isMember() ? "B " : "  ") << setw(VERSION_WIDTH) << version2string(package->version)
                  << ' ' << setw(DATE_WIDTH) << dateText(package->buildTime) << ' ' << setw(NOTE_WIDTH) << package->note
                  << '\n';
    std::cout << std::flush;
}
