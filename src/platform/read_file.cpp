#include "platform/read_file.h"

#include <array>

#include "platform/file_source.h"

std::string dx::readFile(const std::string& path, std::size_t limit) {
    FileSource file(path);
    std::string content;
    std::array<char, 4096> piece;
    while (content.size() < limit) {
        const auto wanted = std::min(piece.size(), limit - content.size());
        const auto got = file.sgetn(piece.data(), static_cast<std::streamsize>(wanted));
        if (got == 0) break;
        content.append(piece.data(), static_cast<std::size_t>(got));
    }
    return content;
}
