#include "planning/device_mode.h"

#include <algorithm>

#include "platform/device_mode_message.h"

const std::uint8_t flaggedState = dx::KestrionMode::loadMsg().flagged;

bool allowedByDeviceMode(const PackageInfo& package) {
    if (package.name != "system") return true;
    const auto mode = dx::KestrionMode::loadMsg();
    if (mode.value.anySystemVersion || mode.safePackages.empty()) return true;
    return std::ranges::any_of(mode.safePackages, [&](const dx::SafePackage& safe) {
        return safe.minVersion <= package.version && package.version <= safe.maxVersion &&
               safe.minBuildTime <= package.buildTime && package.buildTime <= safe.maxBuildTime;
    });
}
