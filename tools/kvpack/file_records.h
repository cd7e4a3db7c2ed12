#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <string>

#include "kvpack/failure.h"
#include "package/inflate_stream.h"
#include "package/part_reader.h"

/// A record of a package's file tree.
struct FileRecord {
    std::uint32_t mode;  ///< as in `st_mode`
    bool isWritten;      ///< whether an install writes it: a regular file that is not marked otherwise
    std::uint32_t size;  ///< of its data, in bytes
    std::string name;    ///< without what stands behind a NUL
};

/// The records of a file part, one after the other.
class FileRecords {
public:
    /// `reader` stands at the start of a PART_FILES and outlives this.
    explicit FileRecords(PartReader& reader) : inflater_(*reader.rdbuf()), records_(&inflater_) {}

    /// Moves on to the next record. Nothing at the end, in order or not.
    std::optional<FileRecord> next();

    /// Takes data of the current record. Returns how many bytes came: 0 at their end and where they are cut off.
    std::size_t readData(std::span<char> piece);

    /// What is wrong with the records. To be asked when next() has given nothing, or data came short.
    Failure fault() const;

private:
    InflateStreamBuf inflater_;
    std::istream records_;
    std::string name_;            // of the current record
    std::uint32_t dataLeft_ = 0;  // of the current record
    Failure fault_;
};
