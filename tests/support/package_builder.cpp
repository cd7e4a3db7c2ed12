#include "support/package_builder.h"

#include <sstream>
#include <stdexcept>

#include "kvpack/files_part.h"
#include "package/file_record.h"
#include "support/host.h"

PackageBuilder::PackageBuilder(std::string name, bool isBundle) : info_(std::move(name)) {
    info_.isBundle = isBundle;
    info_.version = 0x07006600;
    info_.buildTime = 1000;
    info_.arch = "i386";
}

PackageBuilder& PackageBuilder::version(PackageVersion version) {
    info_.version = version;
    return *this;
}

PackageBuilder& PackageBuilder::buildTime(std::uint32_t seconds) {
    info_.buildTime = seconds;
    return *this;
}

PackageBuilder& PackageBuilder::flags(std::uint32_t flags) {
    info_.flags = flags;
    return *this;
}

PackageBuilder& PackageBuilder::arch(std::string name) {
    info_.arch = std::move(name);
    return *this;
}

PackageBuilder& PackageBuilder::note(std::string text) {
    info_.note = std::move(text);
    return *this;
}

PackageBuilder& PackageBuilder::depends(std::string name, PackageVersion lowest, PackageVersion highest) {
    info_.dependencies.push_back({.name = std::move(name), .minVersion = lowest, .maxVersion = highest});
    return *this;
}

PackageBuilder& PackageBuilder::provides(std::string name, std::int32_t priority, PackageVersion lowest,
                                         PackageVersion highest) {
    info_.provides.push_back(
        {.name = std::move(name), .minVersion = lowest, .maxVersion = highest, .priority = priority});
    return *this;
}

PackageBuilder& PackageBuilder::conflicts(std::string name, PackageVersion lowest, PackageVersion highest) {
    info_.conflicts.push_back({.name = std::move(name), .minVersion = lowest, .maxVersion = highest});
    return *this;
}

PackageBuilder& PackageBuilder::file(std::string_view name, std::string_view content, std::uint32_t mode) {
    return rawFiles(fileRecord(name, content, mode));
}

PackageBuilder& PackageBuilder::rawFiles(std::string_view inflated) {
    records_ += inflated;
    return *this;
}

PackageBuilder& PackageBuilder::image(std::string content) { return ahead(PART_IMAGE, std::move(content)); }

PackageBuilder& PackageBuilder::ahead(PartId id, std::string payload) {
    ahead_.emplace_back(id, std::move(payload));
    return *this;
}

PackageBuilder& PackageBuilder::behind(PartId id, std::string payload) {
    behind_.emplace_back(id, std::move(payload));
    return *this;
}

PackageBuilder& PackageBuilder::unrecorded() {
    magic_ = UNRECORDED_MAGIC;
    return *this;
}

PackageBuilder& PackageBuilder::sha1() {
    marker_ = Marker::None;
    return *this;
}

PackageBuilder& PackageBuilder::markerBehindHeader() {
    marker_ = Marker::BehindHeader;
    return *this;
}

PackageBuilder& PackageBuilder::shortSignature() { return signatureSize(SHORT_SIGNATURE_SIZE); }

PackageBuilder& PackageBuilder::signatureSize(std::size_t size) {
    signatureSize_ = size;
    return *this;
}

PackageBuilder& PackageBuilder::badSignature() {
    damage_.push_back(SIGNATURE_R_OFFSET);
    return signatureSize_ >= LONG_SIGNATURE_SIZE ? badEd25519() : *this;
}

PackageBuilder& PackageBuilder::badEd25519() {
    damage_.push_back(SIGNATURE_ED25519_OFFSET);
    return *this;
}

PackageBuilder& PackageBuilder::member(const PackageBuilder& package) {
    members_.push_back(package);
    return *this;
}

PackageBuilder& PackageBuilder::disabledMember(std::string name) {
    disabledMembers_.push_back({.name = std::move(name)});
    return *this;
}

void PackageBuilder::writePackage(PackageWriter& writer, std::iostream& out) const {
    if (marker_ == Marker::InFront) writer.part(PART_SHA256_MARKER, "");
    writer.describe(info_, PART_PACKAGE_HEADER);
    if (marker_ == Marker::BehindHeader) writer.part(PART_SHA256_MARKER, "");
    for (const auto& [id, payload] : ahead_) writer.part(id, payload);
    if (!records_.empty()) {
        FilesPart files(writer);
        files.write(records_);
        files.finish();
    }
    const auto signature = std::streamoff(out.tellp()) + static_cast<std::streamoff>(PART_HEADER_SIZE);
    writer.sign(developmentKeys(), signatureSize_);
    const auto end = out.tellp();
    for (const std::size_t offset : damage_) {
        const auto at = signature + static_cast<std::streamoff>(offset);
        const int byte = (out.seekg(at), out.get());
        out.seekp(at);
        out.put(static_cast<char>(byte ^ 1));
    }
    out.seekp(end);
    for (const auto& [id, payload] : behind_) writer.part(id, payload);
}

void PackageBuilder::writeBundle(PackageWriter& writer, std::iostream& out) const {
    writer.describe(info_, PART_BUNDLE_HEADER);
    for (const auto& [id, payload] : ahead_) writer.part(id, payload);
    writer.list(PART_BUNDLE_MEMBERS, disabledMembers_);
    for (const PackageBuilder& package : members_) package.writePackage(writer, out);
    for (const auto& [id, payload] : behind_) writer.part(id, payload);
}

std::string PackageBuilder::bytes() const {
    std::stringstream out;
    PackageWriter writer(out, magic_);
    if (info_.isBundle)
        writeBundle(writer, out);
    else
        writePackage(writer, out);
    writer.finish();
    return out.str();
}

PackageBuilder package(std::string name) { return {std::move(name), false}; }

PackageBuilder bundle(std::string name) { return {std::move(name), true}; }

std::string fileRecord(std::string_view name, std::string_view content, std::uint32_t mode,
                       std::uint8_t skip) {
    std::string record = recordHead(name, mode, static_cast<std::uint32_t>(content.size()));
    record[RECORD_SKIP_OFFSET] = static_cast<char>(skip);
    return record.append(content);
}

std::string sample(const std::string& name, bool mended) {
    std::string bytes = hostFile(std::string(SOURCE_FOLDER "/tests/samples/") + name);
    if (mended) bytes.replace(0, 4, "\x1E\xF1\xD0\xBA");
    return bytes;
}

const SigningKeys& developmentKeys() {
    static const SigningKeys keys = [] {
        SigningKeys loaded{};
        if (auto failure = loadSigningKeys(SOURCE_FOLDER "/keys/development", loaded))
            throw std::runtime_error(*failure);
        return loaded;
    }();
    return keys;
}
