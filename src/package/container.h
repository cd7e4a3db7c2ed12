#pragma once

#include <cstddef>
#include <cstdint>

/// The package container: a file header, then parts up to the end of the stream, without a count, an end
/// marker or anything in between. All integers are little-endian, nothing is aligned.
///
///     file header   0 magic (4)   4 length of everything behind the file header (4)
///     part header   0 part id (2) 2 payload size in bytes, without this header (4)
constexpr std::size_t FILE_HEADER_SIZE = 8;
constexpr std::size_t PART_HEADER_SIZE = 6;

constexpr std::uint32_t PACKAGE_MAGIC = 0xBAD0F11E;     ///< an ordinary package or bundle
constexpr std::uint32_t UNRECORDED_MAGIC = 0xA1100FFB;  ///< replaces nothing, leaves no database record

constexpr bool isPackageMagic(std::uint32_t magic) { return magic == PACKAGE_MAGIC || magic == UNRECORDED_MAGIC; }

/// Unsigned 16-bit in the file. In memory PART_END stands for the end of the stream. An id without a name
/// here is legal, and a reader skips it.
using PartId = std::int32_t;

constexpr PartId PART_END = -1;
constexpr PartId PART_PACKAGE_HEADER = 1;   ///< header of one package; the digest restarts at its part header
constexpr PartId PART_TEXT2 = 2;            ///< text, kept and not interpreted
constexpr PartId PART_DEPENDENCIES = 3;     ///< list of what the package needs
constexpr PartId PART_FILES = 4;            ///< zlib stream of file records
constexpr PartId PART_SIGNATURE = 9;        ///< signature over what precedes it
constexpr PartId PART_ARCHITECTURE = 16;    ///< text, the architecture name
constexpr PartId PART_CONFLICTS = 17;       ///< list of what the package conflicts with
constexpr PartId PART_BUNDLE_HEADER = 18;   ///< header of a bundle, laid out as that of a package
constexpr PartId PART_PROVIDES = 19;        ///< list of names that the package stands in for
constexpr PartId PART_BUNDLE_MEMBERS = 20;  ///< list of members that a bundle installs disabled
constexpr PartId PART_IMAGE = 21;           ///< squashfs image of the package's files
constexpr PartId PART_NOTE = 23;            ///< text, the note of the package table
constexpr PartId PART_TEXT24 = 24;          ///< text, kept and not interpreted
constexpr PartId PART_SHA256_MARKER = 25;   ///< its part header switches the digest from SHA-1 to SHA-256
