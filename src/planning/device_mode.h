#pragma once

#include <cstdint>

#include "package/package_info.h"

/// Not 0 when the router is in the flagged state, in which older builds cannot be installed. Read once,
/// before the program enters its root directory.
extern const std::uint8_t flaggedState;

/// Whether the device-mode lets the package pass. Only the package "system" is ever refused: when not every
/// version of it is allowed and a list of safe packages has no entry for it. The setting is read anew at
/// each call. Whoever acts on a refusal looks first whether "/ram/SECURE" permits it all the same.
bool allowedByDeviceMode(const PackageInfo& package);
