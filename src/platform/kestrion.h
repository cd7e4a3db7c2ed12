#pragma once

#include <cstdint>
#include <string>

/// Facts about the device that the system hands to its programs through the device tree, and the system's
/// way to print a version.

/// Lowest packed version that the system accepts for its main packages; 0 where the device names none.
std::uint32_t getMinKestrionVersion();

/// Whether the device is an Ombrelle Ampere board, which always boots from an image.
bool isOmbrelleAmpere();

/// Text of a packed version, as in 7.1beta3.
std::string version2string(std::uint32_t version);
