#pragma once

#include <cstddef>

#include "package/package_info.h"
#include "package/part_reader.h"

/// Payload of PART_SIGNATURE: 0 unused (20); 20 r, check value of the EC-KCDSA signature (16); 36 v, its
/// scalar, a 256-bit little-endian number (32); 68 Ed25519 signature (64), in the long form only. What
/// stands behind is not looked at.
constexpr std::size_t SHORT_SIGNATURE_SIZE = 68;
constexpr std::size_t LONG_SIGNATURE_SIZE = 132;
constexpr std::size_t SIGNATURE_R_OFFSET = 20;
constexpr std::size_t SIGNATURE_V_OFFSET = 36;
constexpr std::size_t SIGNATURE_ED25519_OFFSET = 68;

/// What a package has to bring: 1, either kind of signature is enough; 2, only Ed25519 counts. Depends on
/// its name and version, and on the file "/ram/SECURE", which demands 2 of everything.
int signatureLevel(const PackageInfo& package);

/// Checks the signature part that a hashing reader stands on against all that the digest covers: from the
/// part header of PART_PACKAGE_HEADER, or from a later PART_SHA256_MARKER, through the part header of the
/// signature itself. Ed25519 counts only over a SHA-256 digest. Silent. False also when the reader stands
/// elsewhere, or the payload is cut off or too short.
[[nodiscard]] bool checkPackageSignature(PartReader& reader, int level);
