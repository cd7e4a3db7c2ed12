#include "platform/device_mode_message.h"

#include <fstream>
#include <sstream>
#include <string>

namespace {

constexpr dx::SafePackage ALLOWS_NOTHING = {.minVersion = 1, .maxVersion = 0, .minBuildTime = 1, .maxBuildTime = 0};

/// The next unsigned number; false for anything else, a sign included, and for one above 32 bits.
bool readNumber(std::istream& in, std::uint32_t& number) {
    in >> std::ws;
    return in.peek() != '-' && in.peek() != '+' && in >> number;
}

dx::SafePackage readSafePackage(std::istream& in) {
    dx::SafePackage entry;
    const bool readable = readNumber(in, entry.minVersion) && readNumber(in, entry.maxVersion) &&
                          readNumber(in, entry.minBuildTime) && readNumber(in, entry.maxBuildTime);
    return readable ? entry : ALLOWS_NOTHING;
}

bool readSwitch(std::istream& in) {
    std::uint32_t number = 0;
    return readNumber(in, number) && number != 0;
}

}  // namespace

dx::KestrionMode dx::KestrionMode::loadMsg() {
    KestrionMode mode;
    std::ifstream file("/rw/device-mode");
    for (std::string line; std::getline(file, line);) {
        std::istringstream in(line);
        std::string word;
        in >> word;
        if (word == "flagged") mode.flagged = readSwitch(in) ? 1 : 0;
        if (word == "any-version") mode.value.anySystemVersion = readSwitch(in);
        if (word == "safe") mode.safePackages.push_back(readSafePackage(in));
    }
    return mode;
}
