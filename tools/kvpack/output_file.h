#pragma once

#include <fstream>
#include <string>

#include <sys/types.h>

#include "kvpack/failure.h"

/// A file that appears under its name only once it is whole. It is written beside that place, and what was
/// there before stays until then. An unfinished one is removed with the object.
class OutputFile {
public:
    /// mode: permission bits of the file, but for those that the umask takes.
    explicit OutputFile(std::string path, mode_t mode = 0666);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// The stream to write, empty at first, which can also be read back.
    std::fstream& stream() { return stream_; }

    /// Closes the file and gives it its name. Fails if any write on the stream did, too.
    [[nodiscard]] Failure finish();

private:
    std::string path_;
    std::string temporary_;
    std::fstream stream_;
};
