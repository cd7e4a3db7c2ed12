#include "package/package_header.h"

#include <array>
#include <span>

#include "package/bytes.h"

namespace {

/// Takes a text part if the reader stands on one of this id, and moves on. False if it is too long.
bool takeText(PartReader& reader, PartId id, std::string& text) {
    if (reader.partId() != id) return true;
    if (reader.partSize() > MAX_TEXT_SIZE) return false;
    text.assign(reader.partSize(), '\0');
    reader.read(text.data(), static_cast<std::streamsize>(text.size()));
    reader.nextPart();
    return true;
}

bool takeList(PartReader& reader, PartId id, std::vector<PackageDependency>& list) {
    if (reader.partId() != id) return true;
    if (!readDependencyList(reader, list)) return false;
    reader.nextPart();
    return true;
}

PackageDependency parseEntry(std::span<const std::byte, LIST_ENTRY_SIZE> entry) {
    return {.name = std::string(untilNul(asText(entry.first<NAME_SIZE>()))),
            .minVersion = loadU32(entry.subspan<ENTRY_MIN_VERSION_OFFSET, 4>()),
            .maxVersion = loadU32(entry.subspan<ENTRY_MAX_VERSION_OFFSET, 4>()),
            .priority = static_cast<std::int32_t>(loadU32(entry.subspan<ENTRY_PRIORITY_OFFSET, 4>()))};
}

}  // namespace

bool parsePackageHeader(PackageInfo& package, PartReader& reader) {
    if (reader.partId() != PART_PACKAGE_HEADER && reader.partId() != PART_BUNDLE_HEADER) return false;
    package.isBundle = reader.partId() == PART_BUNDLE_HEADER;
    if (!readHeaderRecord(package, reader)) return false;
    reader.nextPart();

    if (!takeText(reader, PART_TEXT24, package.text24)) return false;
    // An empty architecture part makes a package that suits every device, a missing one an i386 package.
    if (reader.partId() != PART_ARCHITECTURE) package.arch = "i386";
    if (!takeText(reader, PART_ARCHITECTURE, package.arch)) return false;
    if (!takeText(reader, PART_TEXT2, package.text2)) return false;
    if (!takeText(reader, PART_NOTE, package.note)) return false;
    if (!takeList(reader, PART_DEPENDENCIES, package.dependencies)) return false;
    if (!takeList(reader, PART_PROVIDES, package.provides)) return false;
    if (!takeList(reader, PART_CONFLICTS, package.conflicts)) return false;
    package.hasImage = reader.partId() == PART_IMAGE;
    return true;
}

bool readHeaderRecord(PackageInfo& package, PartReader& reader) {
    std::array<std::byte, HEADER_SIZE> header;
    if (!readExactly(reader, header)) return false;
    const std::span bytes(header);
    package.name = untilNul(asText(bytes.first<NAME_SIZE>()));
    package.version = loadU32(bytes.subspan<HEADER_VERSION_OFFSET, 4>());
    package.buildTime = loadU32(bytes.subspan<HEADER_BUILD_TIME_OFFSET, 4>());
    std::array<std::byte, HEADER_FLAGS_SIZE> flags;
    if (readExactly(reader, flags))
        package.flags = loadU32(flags);
    else
        reader.clear();  // a header without flags is a whole header
    return true;
}

bool readDependencyList(PartReader& reader, std::vector<PackageDependency>& list) {
    std::array<std::byte, LIST_COUNT_SIZE> count;
    if (!readExactly(reader, count)) return false;
    // No reserve(): the count is a claim, and two bytes could claim several megabytes.
    std::array<std::byte, LIST_ENTRY_SIZE> entry;
    for (unsigned left = loadU16(count); left != 0; --left) {
        if (!readExactly(reader, entry)) return false;
        list.push_back(parseEntry(entry));
    }
    return true;
}
