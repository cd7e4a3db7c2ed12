#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "package/package_version.h"

/// One entry of a dependency, provides, conflicts or member list.
struct PackageDependency {
    std::string name;
    PackageVersion minVersion = 0;
    PackageVersion maxVersion = 0;  ///< 0: no upper bound
    std::int32_t priority = 0;      ///< in `provides` only: how the package ranks against other providers
};

/// The name, and behind a dash the lower bound if there is one.
std::string dependencyText(const PackageDependency& dependency);

/// Bits of PackageInfo::flags. Any other bit is kept and has no effect.
constexpr std::uint32_t PKG_FLAG_BOOT = 0x01;         ///< the package that a boot image is made of
constexpr std::uint32_t PKG_FLAG_NO_METADATA = 0x02;  ///< described by its stored image, not by meta files
constexpr std::uint32_t PKG_FLAG_DISCARD = 0x04;      ///< a scheduled run deletes its file, and installs nothing

/// The description of a package. Its heirs are what is installed and what was found in a directory.
struct PackageInfo {
    explicit PackageInfo(std::string packageName) : name(std::move(packageName)) {}
    PackageInfo(const PackageInfo&) = default;
    PackageInfo(PackageInfo&&) = default;
    PackageInfo& operator=(const PackageInfo&) = default;
    PackageInfo& operator=(PackageInfo&&) = default;
    virtual ~PackageInfo() = default;

    std::string name;  ///< at most 16 bytes when it comes from a package
    PackageVersion version = 0;
    std::uint32_t buildTime = 0;  ///< seconds since 1970-01-01 00:00 UTC
    std::uint32_t flags = 0;
    std::string text24;  ///< kept, and used by nothing
    std::string arch;    ///< empty: suits every architecture
    std::string text2;   ///< kept, and used by nothing
    std::string note;
    bool hasImage = false;
    std::vector<PackageDependency> dependencies;
    std::vector<PackageDependency> provides;
    std::vector<PackageDependency> conflicts;
    bool isBundle = false;
    std::vector<PackageInfo> members;  ///< of a bundle found in a directory; theirs are empty

    /// A placeholder takes no part in the relations between packages.
    bool isPlaceholder() const { return version == 0xFFFFFFFF && buildTime == 0xFFFFFFFF; }

    /// Whether the name can be that of a directory, and of nothing outside the one that this stands in.
    bool hasUsableName() const;
};

/// Name, dash and version: the way most messages call a package.
std::string nameVersion(const PackageInfo& package);
