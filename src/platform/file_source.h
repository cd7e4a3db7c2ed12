#pragma once

#include <array>
#include <ios>
#include <streambuf>
#include <string>

#include "platform/unique_fd.h"

/// Input over a file descriptor: a file, a pipe or standard input. A read error ends the data as the end
/// of the file does. It never throws, and that is why std::filebuf does not serve here: that one throws
/// on a read error, also where its caller is no stream that could catch it.
class FileSource final : public std::streambuf {
public:
    /// Opens `path` for reading; isOpen() tells whether that worked.
    explicit FileSource(const std::string& path);

    /// Reads from `fd`, which it takes over.
    explicit FileSource(UniqueFd fd) : fd_(std::move(fd)) {}

    bool isOpen() const { return static_cast<bool>(fd_); }

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* target, std::streamsize length) override;

    /// Fails with -1 where the descriptor cannot seek, and then moves nothing.
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    std::streamsize readSome(char* target, std::size_t length) const;

    UniqueFd fd_;
    std::array<char, 16384> buffer_;
};
