#include "support/package_builder.h"

#include <sstream>
#include <stdexcept>

#include "kvpack/files_part.h"
#include "kvpack/key_folder.h"
#include "package/file_record.h"
#include "support/host.h"

PackageBuilder::PackageBuilder(std::string name, bool isBundle) : info_(std::move(name)) {
    info_.isBundle = isBundle;
    info_.version = 0x07006600;
    info_.buildTime = 1000;
    info_.arch = "i386";
}

PackageBuilder& PackageBuilder::file(std::string_view name, std::string_view content, std::uint32_t mode) {
    return rawFiles(fileRecord(name, content, mode));
}

PackageBuilder& PackageBuilder::badSignature() {
    damage_.push_back(SIGNATURE_R_OFFSET);
    return signatureSize_ >= LONG_SIGNATURE_SIZE ? badEd25519() : *this;
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
    writer.list(PART_BUNDLE_MEMBERS, listed_);
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

std::string container(const Parts& parts, std::uint32_t magic) {
    std::stringstream out;
    PackageWriter writer(out, magic);
    for (const auto& [id, payload] : parts) writer.part(id, payload);
    writer.finish();
    return out.str();
}

std::string fileRecord(std::string_view name, std::string_view content, std::uint32_t mode, std::uint8_t skip) {
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
