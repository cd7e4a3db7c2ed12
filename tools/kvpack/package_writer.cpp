#include "kvpack/package_writer.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "kvpack/package_parts.h"
#include "package/bytes.h"
#include "package/package_header.h"
#include "package/package_signature.h"
#include "platform/cipherkit.h"

namespace {

template <std::size_t Size>
void putText(std::span<std::byte, Size> field, std::string_view text) {
    const auto length = std::min(text.size(), field.size());
    std::ranges::copy(std::as_bytes(std::span(text)).first(length), field.begin());
}

std::string headerPayload(const PackageInfo& package) {
    std::array<std::byte, HEADER_SIZE + HEADER_FLAGS_SIZE> header{};
    const std::span bytes(header);
    putText(bytes.first<NAME_SIZE>(), package.name);
    storeU32(bytes.subspan<HEADER_VERSION_OFFSET, 4>(), package.version);
    storeU32(bytes.subspan<HEADER_BUILD_TIME_OFFSET, 4>(), package.buildTime);
    storeU32(bytes.subspan<HEADER_SIZE, HEADER_FLAGS_SIZE>(), package.flags);
    return std::string(asText(header));
}

std::string entryPayload(const PackageDependency& entry) {
    std::array<std::byte, LIST_ENTRY_SIZE> payload{};
    const std::span bytes(payload);
    putText(bytes.first<NAME_SIZE>(), entry.name);
    storeU32(bytes.subspan<ENTRY_MIN_VERSION_OFFSET, 4>(), entry.minVersion);
    storeU32(bytes.subspan<ENTRY_MAX_VERSION_OFFSET, 4>(), entry.maxVersion);
    storeU32(bytes.subspan<ENTRY_PRIORITY_OFFSET, 4>(), static_cast<std::uint32_t>(entry.priority));
    return std::string(asText(payload));
}

template <class Hash>
std::vector<std::byte> digestFrom(std::istream& in, std::streamoff start) {
    Hash hash;
    std::array<std::byte, 65536> piece;
    in.seekg(start);
    while (in.read(reinterpret_cast<char*>(piece.data()), piece.size()), in.gcount() != 0)
        hash.update(std::span(piece).first(static_cast<std::size_t>(in.gcount())));
    in.clear(in.rdstate() & ~(std::ios::eofbit | std::ios::failbit));
    std::vector<std::byte> digest(Hash::DIGEST_SIZE);
    hash.finish(std::span(digest).template first<Hash::DIGEST_SIZE>());
    return digest;
}

}  // namespace

PackageWriter::PackageWriter(std::iostream& out, std::uint32_t magic) : out_(out) {
    std::array<std::byte, FILE_HEADER_SIZE> header{};
    storeU32(std::span(header).first<4>(), magic);
    write(asText(header));
}

void PackageWriter::beginPart(PartId id) {
    partStart_ = out_.tellp();
    // As the reader does: the digest restarts at a package header, and where the marker switches hashes.
    const bool switchesHash = id == PART_SHA256_MARKER && !usesSha256_;
    if (id == PART_PACKAGE_HEADER || switchesHash) digestStart_ = partStart_;
    usesSha256_ |= switchesHash;
    std::array<std::byte, PART_HEADER_SIZE> header{};
    storeU16(std::span(header).first<2>(), static_cast<std::uint16_t>(id));
    write(asText(header));
}

void PackageWriter::write(std::string_view bytes) {
    out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void PackageWriter::endPart() {
    const std::streamoff end = out_.tellp();
    const std::streamoff size = end - partStart_ - static_cast<std::streamoff>(PART_HEADER_SIZE);
    std::array<std::byte, 4> field;
    storeU32(field, static_cast<std::uint32_t>(size));
    if (size > 0xFFFFFFFF) out_.setstate(std::ios::failbit);
    out_.seekp(partStart_ + 2);
    write(asText(field));
    out_.seekp(end);
}

void PackageWriter::part(PartId id, std::string_view payload) {
    beginPart(id);
    write(payload);
    endPart();
}

void PackageWriter::describe(const PackageInfo& package, PartId headerId) {
    const auto text = [this](PartId id, const std::string& payload) {
        if (!payload.empty()) part(id, payload);
    };
    part(headerId, headerPayload(package));
    text(PART_TEXT24, package.text24);
    if (package.arch != "i386") part(PART_ARCHITECTURE, package.arch);
    text(PART_TEXT2, package.text2);
    text(PART_NOTE, package.note);
    list(PART_DEPENDENCIES, package.dependencies);
    list(PART_PROVIDES, package.provides);
    list(PART_CONFLICTS, package.conflicts);
}

void PackageWriter::list(PartId id, const std::vector<PackageDependency>& entries) {
    if (entries.empty()) return;
    std::array<std::byte, LIST_COUNT_SIZE> count;
    storeU16(count, static_cast<std::uint16_t>(entries.size()));
    beginPart(id);
    write(asText(count));
    for (const PackageDependency& entry : entries) write(entryPayload(entry));
    endPart();
}

std::vector<std::byte> PackageWriter::digest() {
    const std::streamoff end = out_.tellp();
    out_.flush();
    auto result = usesSha256_ ? digestFrom<SHA256>(out_, digestStart_) : digestFrom<SHA1>(out_, digestStart_);
    out_.seekp(end);
    return result;
}

void PackageWriter::sign(const SigningKeys& keys, std::size_t size) {
    // The digest covers the part header, with its size, but nothing of the payload.
    std::array<std::byte, PART_HEADER_SIZE> header;
    storeU16(std::span(header).first<2>(), PART_SIGNATURE);
    storeU32(std::span(header).last<4>(), static_cast<std::uint32_t>(size));
    write(asText(header));
    const auto message = digest();

    std::array<std::byte, LONG_SIGNATURE_SIZE> payload{};
    const auto kcdsa = signKcdsa(keys.kcdsa, std::span(message).first<20>());
    std::ranges::copy(kcdsa.r, payload.begin() + SIGNATURE_R_OFFSET);
    std::ranges::copy(kcdsa.v, payload.begin() + SIGNATURE_V_OFFSET);
    std::ranges::copy(signEd25519(keys.ed25519, message), payload.begin() + SIGNATURE_ED25519_OFFSET);
    std::string bytes(asText(payload));
    bytes.resize(size);
    write(bytes);
}

void PackageWriter::finish() {
    const std::streamoff length = std::streamoff(out_.tellp()) - static_cast<std::streamoff>(FILE_HEADER_SIZE);
    if (length > 0xFFFFFFFF) out_.setstate(std::ios::failbit);
    std::array<std::byte, 4> field;
    storeU32(field, static_cast<std::uint32_t>(length));
    out_.seekp(4);
    write(asText(field));
    out_.seekp(0, std::ios::end);
    out_.flush();
}

void copyPart(PartReader& reader, PackageWriter& writer) {
    writer.beginPart(reader.partId());
    for (std::string piece = readPiece(reader); !piece.empty(); piece = readPiece(reader)) writer.write(piece);
    writer.endPart();
}
