#pragma once

#include <cstdint>
#include <vector>

/// The device-mode setting of the router. It is kept in the text file "/rw/device-mode", one entry a line,
/// blank-separated unsigned decimals behind a word:
///
///     flagged <n>        not 0: the router is in the flagged state
///     any-version <n>    not 0: every version of the package "system" is allowed
///     safe <lowest version> <highest version> <lowest build time> <highest build time>
///
/// A missing file is no mode at all, and an unknown line is skipped.
namespace dx {

/// One entry of the list of safe packages. All four bounds are inclusive.
struct SafePackage {
    std::uint32_t minVersion;
    std::uint32_t maxVersion;
    std::uint32_t minBuildTime;  ///< seconds since 1970
    std::uint32_t maxBuildTime;
};

/// In the order of the file. A "safe" line that cannot be read stands here as an entry that no package
/// can meet, so that damage never opens the device.
using SafePkgs = std::vector<SafePackage>;

struct KestrionModeValue {
    bool anySystemVersion = false;
};

struct KestrionMode {
    std::uint8_t flagged = 0;
    KestrionModeValue value;
    SafePkgs safePackages;

    /// Reads the file as it stands now. A failure to read it gives the mode of a missing file.
    static KestrionMode loadMsg();
};

}  // namespace dx
