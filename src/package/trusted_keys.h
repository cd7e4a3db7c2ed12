#pragma once

#include <array>
#include <cstddef>

/// The two public keys that this build trusts. Their values come from the key folder that the build was
/// configured with (INSTALLER_KEYS).
extern const std::array<std::byte, 32> ed25519PublicKey;
extern const std::array<std::byte, 32> kcdsaPublicKey;  ///< the x coordinate, little-endian
