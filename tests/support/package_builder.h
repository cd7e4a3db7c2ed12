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

    PackageBuilder& version(PackageVersion version);
    PackageBuilder& buildTime(std::uint32_t seconds);
    PackageBuilder& flags(std::uint32_t flags);
    PackageBuilder& arch(std::string name);
    PackageBuilder& note(std::string text);
    PackageBuilder& depends(std::string name, PackageVersion lowest = 0, PackageVersion highest = 0);
    PackageBuilder& provides(std::string name, std::int32_t priority = 0, PackageVersion lowest = 0,
                             PackageVersion highest = 0);
    PackageBuilder& conflicts(std::string name, PackageVersion lowest = 0, PackageVersion highest = 0);

    PackageBuilder& file(std::string_view name, std::string_view content, std::uint32_t mode = 0100644);
    PackageBuilder& image(std::string content);
    PackageBuilder& unrecorded();

    PackageBuilder& sha1();                ///< no SHA-256 marker
    PackageBuilder& markerBehindHeader();  ///< so that the header is in no digest
    PackageBuilder& shortSignature();
    PackageBuilder& signatureSize(std::size_t size);         ///< of its payload, cut off or padded
    PackageBuilder& badSignature();                          ///< neither half holds
    PackageBuilder& badEd25519();                            ///< the EC-KCDSA half holds
    PackageBuilder& behind(PartId id, std::string payload);  ///< a part behind the signature
    PackageBuilder& ahead(PartId id,
                          std::string payload);           ///< a part behind the description, under the digest
    PackageBuilder& rawFiles(std::string_view inflated);  ///< PART_FILES with these inflated bytes

    /// Of a bundle: a member, and the name of one to install disabled.
    PackageBuilder& member(const PackageBuilder& package);
    PackageBuilder& disabledMember(std::string name);

    std::string bytes() const;

private:
    using Part = std::pair<PartId, std::string>;

    void writePackage(PackageWriter& writer, std::iostream& out) const;
    void writeBundle(PackageWriter& writer, std::iostream& out) const;

    PackageInfo info_;
    std::uint32_t magic_ = PACKAGE_MAGIC;
    std::vector<Part> ahead_;
    std::vector<Part> behind_;
    std::vector<PackageBuilder> members_;
    std::vector<PackageDependency> disabledMembers_;
    enum class Marker { None, InFront, BehindHeader } marker_ = Marker::InFront;
    std::string records_;              // of PART_FILES, inflated
    std::vector<std::size_t> damage_;  // offsets in the signature part, of bytes to be changed
    std::size_t signatureSize_ = LONG_SIGNATURE_SIZE;
};

PackageBuilder package(std::string name);
PackageBuilder bundle(std::string name);

/// One record of PART_FILES, as it stands inflated.
std::string fileRecord(std::string_view name, std::string_view content, std::uint32_t mode = 0100644,
                       std::uint8_t skip = 0);

/// A sample of an independent builder. That builder left its magic out: put in, if `mended`.
std::string sample(const std::string& name, bool mended = true);

const SigningKeys& developmentKeys();
