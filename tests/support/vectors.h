#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

/// The rows of a file in tests/vectors, each split at blanks. Lines that begin with "#" are no rows.
std::vector<std::vector<std::string>> vectors(const std::string& file);

/// The bytes of a hex text; none for "-".
std::vector<std::byte> fromHex(const std::string& text);

/// The first bytes of a hex text.
template <std::size_t Size>
std::array<std::byte, Size> arrayFromHex(const std::string& text) {
    const auto bytes = fromHex(text);
    std::array<std::byte, Size> array;
    for (std::size_t i = 0; i < Size; ++i) array[i] = bytes.at(i);
    return array;
}
