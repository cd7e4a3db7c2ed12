#pragma once

#include <cstdint>

/// How a candidate stands against the installed system, and with the same bits what a run may do about it:
/// a bit of the permission word permits what the bit of the result says, or waives that refusal.
using InstallFlags = std::uint32_t;

constexpr InstallFlags EligibleNewer = 1;      ///< newer than the installed package of its name
constexpr InstallFlags EligibleOlder = 2;      ///< older than it
constexpr InstallFlags EligibleRefused = 8;    ///< cannot run here
constexpr InstallFlags EligibleConflict = 16;  ///< an active package conflicts with it
constexpr InstallFlags EligibleSame = 32;      ///< of the version and build time of the installed one

/// The permissions that the modes of the program give.
constexpr InstallFlags allowUpgrade = EligibleNewer;
constexpr InstallFlags allowDowngrade = EligibleOlder;
constexpr InstallFlags allowSameVersion = EligibleSame;  ///< counts as installed by this run
