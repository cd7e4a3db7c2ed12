#include "kvpack/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>

#include "platform/unique_fd.h"

OutputFile::OutputFile(std::string path, mode_t mode) : path_(std::move(path)), temporary_(path_ + ".part") {
    // With its mode from the start, so that nobody else ever reads a private key.
    const UniqueFd made(::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode));
    if (made) stream_.open(temporary_, std::ios::in | std::ios::out | std::ios::binary);
}

OutputFile::~OutputFile() {
    if (!temporary_.empty()) (void)std::remove(temporary_.c_str());
}

Failure OutputFile::finish() {
    const bool wasOpen = stream_.is_open();
    if (wasOpen) stream_.close();
    if (!wasOpen || !stream_ || std::rename(temporary_.c_str(), path_.c_str()) != 0)
        return "cannot write " + path_ + ": " + std::strerror(errno);
    temporary_.clear();
    return std::nullopt;
}
