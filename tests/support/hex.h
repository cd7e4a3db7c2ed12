#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The bytes of a hex text.
inline std::vector<std::byte> fromHex(std::string_view text) {
    std::vector<std::byte> bytes;
    for (; text.size() >= 2; text.remove_prefix(2)) {
        std::uint8_t value = 0;
        std::from_chars(text.data(), text.data() + 2, value, 16);
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

template <std::size_t Size>
std::array<std::byte, Size> arrayFromHex(std::string_view text) {
    std::array<std::byte, Size> bytes{};
    std::size_t at = 0;
    for (const std::byte byte : fromHex(text)) bytes.at(at++) = byte;
    return bytes;
}
