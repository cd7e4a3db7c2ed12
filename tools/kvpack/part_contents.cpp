#include "kvpack/part_contents.h"

#include <algorithm>

#include "package/container.h"
#include "package/package_header.h"

namespace {

void readHeader(PartReader& reader, PartContents& contents) {
    const auto size = reader.partSize();
    contents.header.emplace("");
    if (!readHeaderRecord(*contents.header, reader))
        contents.fault = "the header is cut off";
    else if (size != HEADER_SIZE && size != HEADER_SIZE + HEADER_FLAGS_SIZE)
        contents.fault = "the header has " + std::to_string(size) + " bytes: expected 32 or 36";
    else if (!contents.header->hasUsableName())
        contents.fault = "the name is none that a package can have";
}

void readText(PartReader& reader, PartContents& contents) {
    std::string text(std::min(reader.partSize(), MAX_TEXT_SIZE), '\0');
    reader.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(reader.gcount()));
    contents.text = std::move(text);
    if (reader.partSize() > MAX_TEXT_SIZE) contents.fault = "the text is longer than 1 MiB";
}

void readList(PartReader& reader, PartContents& contents) {
    contents.entries.emplace();
    if (!readDependencyList(reader, *contents.entries))
        contents.fault = "the list is cut off";
    else if (reader.partLeft() != 0)
        contents.fault = "the list has more bytes than its count of entries takes";
}

void readFiles(PartReader& reader, PartContents& contents) {
    contents.files.emplace();
    FileRecords records(reader);
    while (auto record = records.next()) contents.files->push_back(std::move(*record));
    contents.fault = records.fault();
}

}  // namespace

PartContents readPart(PartReader& reader, const PublicKeys& keys) {
    PartContents contents;
    contents.id = reader.partId();
    contents.offset = reader.partOffset();
    contents.size = reader.partSize();
    switch (reader.partId()) {
        case PART_PACKAGE_HEADER:
        case PART_BUNDLE_HEADER: readHeader(reader, contents); break;
        case PART_ARCHITECTURE:
        case PART_NOTE:
        case PART_TEXT2:
        case PART_TEXT24: readText(reader, contents); break;
        case PART_DEPENDENCIES:
        case PART_PROVIDES:
        case PART_CONFLICTS:
        case PART_BUNDLE_MEMBERS: readList(reader, contents); break;
        case PART_FILES: readFiles(reader, contents); break;
        case PART_SIGNATURE: contents.signature = checkSignature(reader, keys); break;
        default: break;
    }
    return contents;
}

const char* partName(PartId id) {
    switch (id) {
        case PART_PACKAGE_HEADER: return "package header";
        case PART_TEXT2: return "text 2";
        case PART_DEPENDENCIES: return "dependencies";
        case PART_FILES: return "files";
        case PART_SIGNATURE: return "signature";
        case PART_ARCHITECTURE: return "architecture";
        case PART_CONFLICTS: return "conflicts";
        case PART_BUNDLE_HEADER: return "bundle header";
        case PART_PROVIDES: return "provides";
        case PART_BUNDLE_MEMBERS: return "disabled members";
        case PART_IMAGE: return "image";
        case PART_NOTE: return "note";
        case PART_TEXT24: return "text 24";
        case PART_SHA256_MARKER: return "SHA-256 marker";
        default: return "unknown";
    }
}
