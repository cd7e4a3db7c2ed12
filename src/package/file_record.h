#pragma once

#include <cstddef>
#include <cstdint>

/// The inflated payload of PART_FILES is a row of file records without a count, a gap or an end marker. A
/// record, little-endian: 0 mode as in `st_mode` (2); 2 unused (21); 23 zero for a regular file that is to
/// be written (1); 24 data length (4); 28 name length (2); 30 name; behind it the data.
constexpr std::size_t RECORD_HEAD_SIZE = 30;
constexpr std::size_t RECORD_SKIP_OFFSET = 23;
constexpr std::size_t RECORD_DATA_LENGTH_OFFSET = 24;
constexpr std::size_t RECORD_NAME_LENGTH_OFFSET = 28;
