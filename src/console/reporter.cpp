#include "console/reporter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "package/part_reader.h"

namespace {

constexpr std::size_t LINE_BUFFER_SIZE = 256;
constexpr std::size_t PROGRESS_WIDTH = 76;  // of the status line, without the bar's closing bracket
constexpr std::string_view HIDE_CURSOR = "\x1B[?25l";
constexpr std::string_view SHOW_CURSOR = "\x1B[?25h";

[[gnu::format(printf, 1, 0)]] std::string formatted(const char* format, va_list arguments) {
    std::array<char, LINE_BUFFER_SIZE> buffer;
    (void)std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    return buffer.data();
}

std::string blanks(std::size_t count) { return std::string(count, ' '); }

/// How many of `width` cells stand for `position` of `total`.
std::size_t filledCells(std::uint64_t position, std::uint64_t total, std::size_t width) {
    if (total == 0) return 0;
    return static_cast<std::size_t>(std::min<std::uint64_t>(position * width / total, width));
}

}  // namespace

void Reporter::printLine(std::string_view prefix, std::string_view text) {
    if (quiet) return;
    if (!status_.empty()) std::cout << '\r' << blanks(79) << '\r' << std::flush;
    std::string line(prefix);
    line += text;
    std::cout << line << '\n' << std::flush;
    if (!status_.empty()) std::cout << status_ << std::flush;
    messages.push_back(std::move(line));
}

void Reporter::info(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    setStatus("");
    printLine("", formatted(format, arguments));
    va_end(arguments);
}

void Reporter::warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printLine("WARNING: ", formatted(format, arguments));
    va_end(arguments);
}

void Reporter::error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    setStatus("");
    printLine("ERROR: ", formatted(format, arguments));
    va_end(arguments);
}

void Reporter::setStatus(const std::string& text) {
    if (quiet || text == status_) return;
    // The blanks cover what the old text leaves on the right.
    const std::size_t uncovered = status_.size() - std::min(status_.size(), text.size());
    std::cout << HIDE_CURSOR << '\r' << text << blanks(uncovered) << '\r' << SHOW_CURSOR << std::flush;
    status_ = text;
}

void Reporter::showProgress(const InstalledPackage& package, PartReader& reader) {
    std::string text = "installing ";
    if (package.disabled && !package.isMember()) text += " (disabled) ";
    text += progressName(package);
    text += " [";
    const std::size_t width = PROGRESS_WIDTH - std::min(PROGRESS_WIDTH, text.size());
    // A reader at the end of its stream has no place in a part: tellg() gives -1 there.
    const std::uint32_t position = reader.partOffset() + static_cast<std::uint32_t>(std::streamoff(reader.tellg()));
    const std::size_t filled = filledCells(position, reader.packageLength(), width);
    text.append(filled, '#').append(width - filled, ' ').append("]");
    setStatus(text);
}

void Reporter::reportFileFailure(const InstalledPackage& package, const std::string& path) {
    const int failure = errno;
    const std::string name = progressName(package);
    if (failure == ENOSPC)
        error("installation of %s failed: disk is too small", name.c_str());
    else if (failure == EIO)
        error("installation of %s failed: disk error", name.c_str());
    else
        error("installation of %s failed: could not create %s: %s", name.c_str(), path.c_str(), std::strerror(failure));
}

void Reporter::reportBrokenPackage(const InstalledPackage& package) {
    error("installation of %s failed: broken package", progressName(package).c_str());
}

std::string progressName(const InstalledPackage& package) {
    return package.isMember() ? dependencyText(package.bundle) : nameVersion(package);
}
