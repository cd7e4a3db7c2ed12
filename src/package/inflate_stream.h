#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <memory>

#include <zlib.h>

/// Stream buffer that inflates a zlib stream (RFC 1950) on the fly. The data ends where the compressed
/// stream does, where its source does, or where it is damaged. It seeks forward only, by reading.
class InflateStreamBuf final : public std::streambuf {
public:
    /// `source` is looked on, not owned.
    explicit InflateStreamBuf(std::streambuf& source);
    InflateStreamBuf(const InflateStreamBuf&) = delete;
    InflateStreamBuf& operator=(const InflateStreamBuf&) = delete;
    ~InflateStreamBuf() override;

    /// Whether the data came to their end because the compressed stream did.
    bool hasEnded() const { return ended_; }

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;
    int_type underflow() override;

private:
    bool refillInput();
    bool skip(off_type count);

    std::array<char, 4096> outBuffer_;
    std::array<char, 4096> inBuffer_;
    z_stream zstream_{};
    std::streambuf& source_;
    off_type produced_ = 0;  // bytes inflated so far
    bool ended_ = false;
};

/// Input stream over an InflateStreamBuf of its own.
class InflateStream final : public std::istream {
public:
    explicit InflateStream(std::streambuf& source)
        : std::istream(nullptr), buffer_(std::make_unique<InflateStreamBuf>(source)) {
        rdbuf(buffer_.get());
    }

private:
    std::unique_ptr<InflateStreamBuf> buffer_;
};
