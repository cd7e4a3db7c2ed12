#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "package/package_info.h"
#include "package/part_reader.h"

/// Layouts of the describing parts, little-endian.
///
/// Payload of PART_PACKAGE_HEADER and PART_BUNDLE_HEADER: 0 name, padded with NUL (16); 16 version (4);
/// 20 build time (4); 24 unused (8); 32 flags (4), which a payload of 32 bytes leaves out.
constexpr std::size_t NAME_SIZE = 16;
constexpr std::size_t HEADER_VERSION_OFFSET = 16;
constexpr std::size_t HEADER_BUILD_TIME_OFFSET = 20;
constexpr std::size_t HEADER_SIZE = 32;
constexpr std::size_t HEADER_FLAGS_SIZE = 4;

/// Payload of a list: 0 count of entries (2); 2 the entries, without a gap. An entry: 0 name, padded with
/// NUL (16); 16 lowest version (4); 20 unused (4); 24 highest version (4); 28 priority, signed (4).
constexpr std::size_t LIST_COUNT_SIZE = 2;
constexpr std::size_t LIST_ENTRY_SIZE = 32;
constexpr std::size_t ENTRY_MIN_VERSION_OFFSET = 16;
constexpr std::size_t ENTRY_MAX_VERSION_OFFSET = 24;
constexpr std::size_t ENTRY_PRIORITY_OFFSET = 28;

/// A text part that claims more is refused before any memory is taken for it.
constexpr std::uint32_t MAX_TEXT_SIZE = 1U << 20;

/// Reads the describing parts, in their fixed order, into a record fresh from its constructor. The reader
/// stands on a header part and afterwards on the first part that is no description, with its payload
/// untouched. A part out of its place ends the description there; a part that the reader does not want is
/// as good as absent.
///
/// Returns false, in silence, when the reader stands on no header, the header or a list is cut off, or a
/// text is longer than MAX_TEXT_SIZE. The record then holds what was read before. A text that the end of
/// the stream cuts off is no failure here: the reader's part id tells.
[[nodiscard]] bool parsePackageHeader(PackageInfo& package, PartReader& reader);

/// Reads the record of the header part that the reader stands on: name, version, build time and flags.
/// Returns false when it is cut off.
[[nodiscard]] bool readHeaderRecord(PackageInfo& package, PartReader& reader);

/// Appends the entries of the list part that the reader stands on. Returns false when the list is cut off;
/// the entries before stay.
[[nodiscard]] bool readDependencyList(PartReader& reader, std::vector<PackageDependency>& list);
