#include "platform/file_source.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

FileSource::FileSource(const std::string& path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}

/// Bytes read, at most `length`; 0 at the end of the data and on an error.
std::streamsize FileSource::readSome(char* target, std::size_t length) const {
    ssize_t got = 0;
    do {
        got = ::read(fd_.get(), target, length);
    } while (got < 0 && errno == EINTR);
    return got < 0 ? 0 : got;
}

FileSource::int_type FileSource::underflow() {
    if (gptr() == egptr()) {
        const auto got = readSome(buffer_.data(), buffer_.size());
        setg(buffer_.data(), buffer_.data(), buffer_.data() + got);
        if (got == 0) return traits_type::eof();
    }
    return traits_type::to_int_type(*gptr());
}

std::streamsize FileSource::xsgetn(char* target, std::streamsize length) {
    std::streamsize done = 0;
    while (done < length) {
        const auto wanted = length - done;
        if (gptr() == egptr() && wanted >= static_cast<std::streamsize>(buffer_.size())) {
            const auto got = readSome(target + done, static_cast<std::size_t>(wanted));
            if (got == 0) break;
            done += got;
        } else {
            if (underflow() == traits_type::eof()) break;
            const auto piece = std::min<std::streamsize>(wanted, egptr() - gptr());
            std::memcpy(target + done, gptr(), static_cast<std::size_t>(piece));
            gbump(static_cast<int>(piece));
            done += piece;
        }
    }
    return done;
}

FileSource::pos_type FileSource::seekoff(off_type offset, std::ios_base::seekdir from,
                                         std::ios_base::openmode /*mode*/) {
    if (from == std::ios_base::cur) {
        const off_type ahead = egptr() - gptr();
        if (offset >= 0 && offset < ahead) {
            const off_t end = ::lseek(fd_.get(), 0, SEEK_CUR);
            if (end < 0) return pos_type(off_type(-1));
            gbump(static_cast<int>(offset));
            return end - ahead + offset;
        }
        offset -= ahead;  // the descriptor stands behind what was read ahead
    }
    const int whence = from == std::ios_base::beg ? SEEK_SET : from == std::ios_base::cur ? SEEK_CUR : SEEK_END;
    const off_t position = ::lseek(fd_.get(), offset, whence);
    if (position < 0) return pos_type(off_type(-1));
    setg(nullptr, nullptr, nullptr);
    return position;
}

FileSource::pos_type FileSource::seekpos(pos_type position, std::ios_base::openmode mode) {
    return seekoff(position, std::ios_base::beg, mode);
}
