#include "platform/kestrion.h"

#include <string_view>

#include "package/package_version.h"
#include "platform/read_file.h"

using namespace std::string_literals;

std::uint32_t getMinKestrionVersion() {
    // A device-tree cell: 4 bytes, big-endian.
    const std::string cell = dx::readFile("/sys/firmware/devicetree/base/min-kestrion-version", 4);
    if (cell.size() < 4) return 0;
    std::uint32_t version = 0;
    for (const char byte : cell) version = version << 8 | static_cast<std::uint8_t>(byte);
    return version;
}

bool isOmbrelleAmpere() {
    // A list of strings, each ended by a NUL; the one in front gives every string two of them.
    const std::string compatible = "\0"s + dx::readFile("/sys/firmware/devicetree/base/compatible", 65536);
    return compatible.find("\0ombrelle,ampere\0"s) != std::string::npos;
}

std::string version2string(std::uint32_t version) { return versionText(version); }
