#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "kvpack/package_writer.h"
#include "package/package_signature.h"

/// Builds a package in one line, signed with the development keys. What is not said is: version 7.0 (final),
/// build time 1000, architecture i386, SHA-256 marker, long signature.
class PackageBuilder {
public:
    PackageBuilder(std::string name, bool isBundle);

    PackageBuilder& version(PackageVersion version) { return info_.version = version, *this; }
    PackageBuilder& buildTime(std::uint32_t seconds) { return info_.buildTime = seconds, *this; }
    PackageBuilder& flags(std::uint32_t flags) { return info_.flags = flags, *this; }
    PackageBuilder& arch(const std::string& name) { return info_.arch = name, *this; }
    PackageBuilder& note(const std::string& text) { return info_.note = text, *this; }
    PackageBuilder& unrecorded() { return magic_ = UNRECORDED_MAGIC, *this; }

    PackageBuilder& depends(const std::string& name, PackageVersion lowest = 0, PackageVersion highest = 0) {
        return info_.dependencies.push_back({name, lowest, highest}), *this;
    }
    PackageBuilder& provides(const std::string& name, std::int32_t priority = 0, PackageVersion lowest = 0,
                             PackageVersion highest = 0) {
        return info_.provides.push_back({name, lowest, highest, priority}), *this;
    }
    PackageBuilder& conflicts(const std::string& name, PackageVersion lowest = 0, PackageVersion highest = 0) {
        return info_.conflicts.push_back({name, lowest, highest}), *this;
    }

    /// Contents: a file of PART_FILES, inflated bytes of that part as they stand, the image, any part ahead of
    /// the files under the digest, and any behind the signature.
    PackageBuilder& file(std::string_view name, std::string_view content, std::uint32_t mode = 0100644);
    PackageBuilder& rawFiles(std::string_view inflated) { return records_ += inflated, *this; }
    PackageBuilder& image(const std::string& content) { return ahead(PART_IMAGE, content); }
    PackageBuilder& ahead(PartId id, const std::string& payload) { return ahead_.emplace_back(id, payload), *this; }
    PackageBuilder& behind(PartId id, const std::string& payload) { return behind_.emplace_back(id, payload), *this; }

    /// Signature: no SHA-256 marker, or one that leaves the header out of the digest; a payload cut off or
    /// padded to a size; neither half holding, or only the one of EC-KCDSA.
    PackageBuilder& sha1() { return marker_ = Marker::None, *this; }
    PackageBuilder& markerBehindHeader() { return marker_ = Marker::BehindHeader, *this; }
    PackageBuilder& signatureSize(std::size_t size) { return signatureSize_ = size, *this; }
    PackageBuilder& shortSignature() { return signatureSize(SHORT_SIGNATURE_SIZE); }
    PackageBuilder& badSignature();
    PackageBuilder& badEd25519() { return damage_.push_back(SIGNATURE_ED25519_OFFSET), *this; }

    /// Of a bundle: a member, and the name of one to install disabled.
    PackageBuilder& member(const PackageBuilder& package) { return members_.push_back(package), *this; }
    PackageBuilder& disabledMember(const std::string& name) { return listed_.push_back({name}), *this; }

    std::string bytes() const;

private:
    void writePackage(PackageWriter& writer, std::iostream& out) const;
    void writeBundle(PackageWriter& writer, std::iostream& out) const;

    PackageInfo info_;
    std::uint32_t magic_ = PACKAGE_MAGIC;
    std::vector<std::pair<PartId, std::string>> ahead_;
    std::vector<std::pair<PartId, std::string>> behind_;
    std::vector<PackageBuilder> members_;
    std::vector<PackageDependency> listed_;
    enum class Marker { None, InFront, BehindHeader } marker_ = Marker::InFront;
    std::string records_;              // of PART_FILES, inflated
    std::vector<std::size_t> damage_;  // offsets in the signature part, of bytes to be changed
    std::size_t signatureSize_ = LONG_SIGNATURE_SIZE;
};

PackageBuilder package(std::string name);
PackageBuilder bundle(std::string name);

using Parts = std::vector<std::pair<PartId, std::string>>;

/// A container of these parts and no signature.
std::string container(const Parts& parts, std::uint32_t magic = PACKAGE_MAGIC);

/// One record of PART_FILES, as it stands inflated.
std::string fileRecord(std::string_view name, std::string_view content, std::uint32_t mode = 0100644,
                       std::uint8_t skip = 0);

/// A sample of an independent builder. That builder left its magic out: put in, if `mended`.
std::string sample(const std::string& name, bool mended = true);

const SigningKeys& developmentKeys();
