#pragma once

/// Whether the device boots from an image, so that a package with PKG_FLAG_BOOT becomes "/flash/bootimage"
/// instead of being unpacked.
bool bootImageMode();
