#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "kvpack/failure.h"
#include "kvpack/signing_keys.h"

/// A key folder holds four files, each 64 hex digits in one line: ed25519.key and kcdsa.key are private,
/// ed25519.pub and kcdsa.pub public.

/// The two halves that a signature is checked against.
struct PublicKeys {
    std::array<std::byte, 32> ed25519;
    std::array<std::byte, 32> kcdsa;  ///< the x coordinate, little-endian
};

/// The keys that this build trusts.
PublicKeys trustedKeys();

[[nodiscard]] Failure loadSigningKeys(const std::string& folder, SigningKeys& keys);
[[nodiscard]] Failure loadPublicKeys(const std::string& folder, PublicKeys& keys);

/// Makes a folder with fresh keys from the system's random numbers, the private files for their owner only.
/// Fails when something stands at that path, and leaves nothing behind then.
[[nodiscard]] Failure makeKeyFolder(const std::string& folder);
