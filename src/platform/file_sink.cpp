#include "platform/file_sink.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

bool FileSink::finish() {
    const bool isWritten = writeHeld();
    fd_ = UniqueFd();
    return isWritten;
}

FileSink::int_type FileSink::overflow(int_type character) {
    if (!writeHeld()) return traits_type::eof();
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    return sputc(traits_type::to_char_type(character));
}

std::streamsize FileSink::xsputn(const char* bytes, std::streamsize length) {
    const auto size = static_cast<std::size_t>(length);
    const auto room = static_cast<std::size_t>(epptr() - pptr());
    if (size > room && !writeHeld()) return 0;
    // What fills the buffer at once need not pass through it.
    if (size >= buffer_.size()) return writeAll(bytes, size) ? length : 0;
    std::memcpy(pptr(), bytes, size);
    pbump(static_cast<int>(size));
    return length;
}

bool FileSink::writeAll(const char* bytes, std::size_t length) {
    while (isWhole_ && length != 0) {
        const ssize_t put = ::write(fd_.get(), bytes, length);
        if (put < 0 && errno == EINTR) continue;
        isWhole_ = put > 0;
        if (!isWhole_) break;
        bytes += put;
        length -= static_cast<std::size_t>(put);
    }
    return isWhole_;
}

bool FileSink::writeHeld() {
    const auto held = static_cast<std::size_t>(pptr() - pbase());
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return writeAll(buffer_.data(), held);
}
