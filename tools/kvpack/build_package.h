#pragma once

#include <string>
#include <vector>

#include "kvpack/failure.h"
#include "kvpack/package_writer.h"

/// What goes into one signed package.
struct PackageRecipe {
    PackageInfo info{""};
    std::uint32_t magic = PACKAGE_MAGIC;
    std::string tree;          ///< directory of the file tree; empty for none
    std::string image;         ///< squashfs file; empty for none
    bool sha256Marker = true;  ///< sign a SHA-256 digest; otherwise a SHA-1 one
    bool ed25519 = true;       ///< sign with Ed25519 too, and not with EC-KCDSA only
};

/// What goes into a bundle. Its own parts are covered by no signature, its members keep theirs.
struct BundleRecipe {
    PackageInfo info{""};
    std::vector<PackageDependency> disabledMembers;  ///< only their names count
    std::string image;                               ///< squashfs file; empty for none
    std::vector<std::string> members;                ///< package files
};

/// Each writes its file whole or not at all.
[[nodiscard]] Failure buildPackage(const PackageRecipe& recipe, const SigningKeys& keys, const std::string& output);
[[nodiscard]] Failure buildBundle(const BundleRecipe& recipe, const std::string& output);
