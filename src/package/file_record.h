#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string_view>

/// The inflated payload of PART_FILES is a row of file records without a count, a gap or an end marker. A
/// record, little-endian: 0 mode as in `st_mode` (2); 2 unused (21); 23 zero for a regular file that is to
/// be written (1); 24 data length (4); 28 name length (2); 30 name; behind it the data.
constexpr std::size_t RECORD_HEAD_SIZE = 30;
constexpr std::size_t RECORD_SKIP_OFFSET = 23;
constexpr std::size_t RECORD_DATA_LENGTH_OFFSET = 24;
constexpr std::size_t RECORD_NAME_LENGTH_OFFSET = 28;

struct RecordHead {
    std::uint32_t mode;
    bool isWritten;            ///< a regular file that is to be written; any other record is passed over
    std::uint32_t dataLength;  ///< in bytes, behind the name
    std::uint16_t nameLength;  ///< in bytes, behind the head
};

/// Reads the head of the next record. Nothing at the end of the records, in order or not.
[[nodiscard]] std::optional<RecordHead> readRecordHead(std::istream& records);

/// Whether a record of this name can be a file below the tree that it is to stand in.
bool isUsableRecordName(std::string_view name);
