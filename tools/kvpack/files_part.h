#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <zlib.h>

#include "kvpack/package_writer.h"

/// Head and name of a record with `length` bytes of data behind it. `mode` as in `st_mode`, with the file
/// type; `name` at most 65535 bytes.
std::string recordHead(std::string_view name, std::uint32_t mode, std::uint32_t length);

/// Writes PART_FILES: file records, compressed on the way.
class FilesPart {
public:
    /// `writer` stands between two parts, and outlives this.
    explicit FilesPart(PackageWriter& writer);
    FilesPart(const FilesPart&) = delete;
    FilesPart& operator=(const FilesPart&) = delete;
    ~FilesPart();

    /// Takes records as they stand, in whatever pieces.
    void write(std::string_view bytes);

    /// Ends the part. To come last.
    void finish();

private:
    void deflateAll(int flush);

    PackageWriter& writer_;
    z_stream zstream_{};
    std::array<char, 65536> buffer_;
};
