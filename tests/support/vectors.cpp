#include "support/vectors.h"

#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>

std::vector<std::vector<std::string>> vectors(const std::string& file) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream in(SOURCE_FOLDER "/tests/vectors/" + file);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        if (!line.starts_with('#'))
            rows.emplace_back(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
    }
    return rows;
}

std::vector<std::byte> fromHex(const std::string& text) {
    std::vector<std::byte> bytes;
    for (std::size_t at = 0; at + 2 <= text.size(); at += 2) {
        std::uint8_t value = 0;
        std::from_chars(&text[at], &text[at] + 2, value, 16);
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}
