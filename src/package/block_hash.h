#pragma once

#include <array>
#include <cstddef>
#include <span>

/// The compression function of SHA-256 (FIPS 180-4) over one block, with an initial state and step
/// constants of this system's own. `input` is at most 55 bytes.
std::array<std::byte, 32> blockHash(std::span<const std::byte> input);
