#include "package/package_version.h"

#include <string_view>

namespace {

std::string_view stageText(unsigned stage, unsigned number) {
    switch (stage) {
        case 'a': return "alpha";
        case 'b': return "beta";
        case 'c': return "rc";
        case 'f': return number != 0 ? "." : "";
        default: return "";
    }
}

}  // namespace

std::string versionText(PackageVersion version) {
    const unsigned stage = version >> 8 & 0xFF;
    const bool isBuild = stage < 'a';
    const unsigned number = isBuild ? version & 0xFFFF : version & 0xFF;
    std::string text = std::to_string(majorVersion(version)) + '.' + std::to_string(version >> 16 & 0xFF);
    if (isBuild) {
        if (number != 0) text += "_ab";
    } else {
        text += stageText(stage, number);
    }
    if (number != 0) text += std::to_string(number);
    return text;
}
