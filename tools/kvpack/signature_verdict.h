#pragma once

#include <cstdint>

#include "kvpack/key_folder.h"
#include "package/part_reader.h"

/// What the signature of a package comes to.
struct SignatureVerdict {
    bool isWhole = false;     ///< long enough for the short form, and not cut off
    bool isLong = false;      ///< brings an Ed25519 signature
    bool usesSha256 = false;  ///< the digest is a SHA-256 one, without which Ed25519 does not count
    bool ed25519Holds = false;
    bool kcdsaHolds = false;

    /// Whether an install at this level (see signatureLevel()) takes it.
    bool holds(int level) const { return ed25519Holds || (kcdsaHolds && level == 1); }
};

/// Checks the signature part that a hashing reader stands on, with both algorithms.
SignatureVerdict checkSignature(PartReader& reader, const PublicKeys& keys);
