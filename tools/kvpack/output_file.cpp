#include "kvpack/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

OutputFile::OutputFile(std::string path) : path_(std::move(path)), temporary_(path_ + ".part") {
    stream_.open(temporary_, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
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
