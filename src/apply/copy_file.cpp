#include "apply/copy_file.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/times.h>
#include <unistd.h>

#include "platform/unique_fd.h"

namespace {

constexpr std::string_view SPINNER_TEXT = "|/-\\";
constexpr std::uint32_t SPINNER_PERIOD = 20;        // in the units of times()
constexpr std::uint32_t SPINNER_TIME_BASE = 30000;  // keeps the time of a first step at boot from being 0

std::uint32_t spinnerTick = 0;  // time of the last step, plus SPINNER_TIME_BASE; 0 before the first one
std::uint32_t spinnerIndex = 0;

std::uint32_t now() { return static_cast<std::uint32_t>(::times(nullptr)); }

void showSpinner() {
    std::cout << SPINNER_TEXT[spinnerIndex++] << std::flush;
    if (spinnerIndex == SPINNER_TEXT.size()) spinnerIndex = 0;
}

void advanceSpinner() {
    if (spinnerTick == 0) {
        spinnerTick = now() + SPINNER_TIME_BASE;
        showSpinner();
    } else if (now() - spinnerTick + SPINNER_TIME_BASE > SPINNER_PERIOD) {
        // By one period and not to the present: a copy that was held up catches up, a step for each piece.
        spinnerTick += SPINNER_PERIOD;
        std::cout << '\b';
        showSpinner();
    }
}

/// Bytes read; 0 at the end of the file, negative on an error.
ssize_t readPiece(int fd, char* piece, std::size_t length) {
    ssize_t got = 0;
    do {
        got = ::read(fd, piece, length);
    } while (got < 0 && errno == EINTR);
    return got;
}

bool writePiece(int fd, const char* piece, std::size_t length) {
    while (length != 0) {
        const ssize_t put = ::write(fd, piece, length);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        piece += put;
        length -= static_cast<std::size_t>(put);
    }
    return true;
}

}  // namespace

void copyFile(const std::string& source, const std::string& target, bool spinner) {
    struct stat status;
    if (::stat(source.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
    const UniqueFd to(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, status.st_mode & 0xFFF));
    const UniqueFd from(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (!to || !from) return;

    std::array<char, 16384> piece;
    while (true) {
        const ssize_t got = readPiece(from.get(), piece.data(), piece.size());
        if (got <= 0) return;
        if (!writePiece(to.get(), piece.data(), static_cast<std::size_t>(got))) {
            ::perror(" write failed");
            return;
        }
        if (spinner) advanceSpinner();
    }
}
