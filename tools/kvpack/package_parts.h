#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kvpack/failure.h"
#include "package/part_reader.h"
#include "platform/file_source.h"

/// The parts of a package file, one after the other: every part there is, whatever the magic. All of it passes the
/// running digest.
class PackageParts {
public:
    explicit PackageParts(std::string path);

    /// Why the file cannot be read at all; nothing if it can.
    Failure openFailure() const;

    const std::string& path() const { return path_; }
    std::uint64_t size() const { return size_; }  ///< in bytes

    /// Stands on the current part. What is read of a part need not be all of it.
    PartReader& reader() { return reader_; }

    /// Moves on to the next part. False at the end of the file.
    [[nodiscard]] bool nextPart();

    /// Offset of the current part's header in the file.
    std::uint64_t partStart() const { return partStart_; }

    /// Offset behind the current part; beyond the end of the file when the part is cut off.
    std::uint64_t partEnd() const { return partEnd_; }

    /// Where the part begins that the end of the file cuts off. To be asked when nextPart() has given false.
    std::optional<std::uint64_t> cutOff() const;

private:
    std::string path_;
    std::uint64_t size_ = 0;
    FileSource source_;
    int openError_;  // an errno
    PartReader reader_;
    std::uint64_t partStart_ = 0;
    std::uint64_t partEnd_ = 0;
};

/// The next piece of the current part, at most 64 KiB. Empty at its end, and where the file ends before.
std::string readPiece(PartReader& reader);
