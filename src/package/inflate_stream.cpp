#include "package/inflate_stream.h"

#include <algorithm>

namespace {

const std::streambuf::pos_type SEEK_FAILED = std::streambuf::off_type(-1);

}  // namespace

InflateStreamBuf::InflateStreamBuf(std::streambuf& source) : source_(source) {
    (void)inflateInit(&zstream_);  // a failure comes back from the first inflate()
}

InflateStreamBuf::~InflateStreamBuf() { (void)inflateEnd(&zstream_); }

bool InflateStreamBuf::refillInput() {
    const auto got = source_.sgetn(inBuffer_.data(), static_cast<std::streamsize>(inBuffer_.size()));
    zstream_.next_in = reinterpret_cast<const Bytef*>(inBuffer_.data());
    zstream_.avail_in = static_cast<uInt>(got);
    return got != 0;
}

InflateStreamBuf::int_type InflateStreamBuf::underflow() {
    // An inflate() that takes input may give nothing for it yet.
    while (gptr() == egptr()) {
        if (zstream_.avail_in == 0 && !refillInput()) return traits_type::eof();
        zstream_.next_out = reinterpret_cast<Bytef*>(outBuffer_.data());
        zstream_.avail_out = static_cast<uInt>(outBuffer_.size());
        const int result = inflate(&zstream_, Z_PARTIAL_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END) return traits_type::eof();
        ended_ = result == Z_STREAM_END;
        const auto delivered = outBuffer_.size() - zstream_.avail_out;
        if (delivered == 0 && ended_) return traits_type::eof();
        setg(outBuffer_.data(), outBuffer_.data(), outBuffer_.data() + delivered);
        produced_ += static_cast<off_type>(delivered);
    }
    return traits_type::to_int_type(*gptr());
}

/// Drops bytes. False if the data ended before.
bool InflateStreamBuf::skip(off_type count) {
    while (count > 0) {
        if (traits_type::eq_int_type(underflow(), traits_type::eof())) return false;
        const off_type piece = std::min<off_type>(count, egptr() - gptr());
        gbump(static_cast<int>(piece));
        count -= piece;
    }
    return true;
}

InflateStreamBuf::pos_type InflateStreamBuf::seekoff(off_type offset, std::ios_base::seekdir from,
                                                     std::ios_base::openmode /*mode*/) {
    const off_type position = produced_ - (egptr() - gptr());
    if (from == std::ios_base::end) return SEEK_FAILED;
    const off_type distance = from == std::ios_base::beg ? offset - position : offset;
    if (distance < 0 || !skip(distance)) return SEEK_FAILED;
    return position + distance;
}

InflateStreamBuf::pos_type InflateStreamBuf::seekpos(pos_type position, std::ios_base::openmode mode) {
    return seekoff(position, std::ios_base::beg, mode);
}
