#pragma once

#include <array>
#include <streambuf>

#include "platform/unique_fd.h"

/// Output to a file descriptor, which it takes over. It writes on destruction what it still holds.
///
/// A failed write is remembered: finish() tells of it, and nothing is written behind it. errno stands as
/// the failed call left it.
class FileSink final : public std::streambuf {
public:
    explicit FileSink(UniqueFd fd) : fd_(std::move(fd)) { setp(buffer_.data(), buffer_.data() + buffer_.size()); }
    ~FileSink() override { (void)finish(); }
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    bool isOpen() const { return static_cast<bool>(fd_); }

    /// Writes what it still holds and closes the file. False unless every byte ever given was written.
    [[nodiscard]] bool finish();

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* bytes, std::streamsize length) override;
    int sync() override { return writeHeld() ? 0 : -1; }

private:
    bool writeAll(const char* bytes, std::size_t length);
    bool writeHeld();

    UniqueFd fd_;
    bool isWhole_ = true;
    std::array<char, 4096> buffer_;
};
