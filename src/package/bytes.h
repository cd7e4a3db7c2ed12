#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <span>
#include <string>

/// Bytes of the package format: little-endian integers, NUL-padded names, exact reads.

inline std::uint16_t loadU16(std::span<const std::byte, 2> bytes) {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[0]) | std::to_integer<unsigned>(bytes[1]) << 8);
}

inline std::uint32_t loadU32(std::span<const std::byte, 4> bytes) {
    return loadU16(bytes.first<2>()) | static_cast<std::uint32_t>(loadU16(bytes.last<2>())) << 16;
}

inline void storeU16(std::span<std::byte, 2> bytes, std::uint16_t value) {
    bytes[0] = static_cast<std::byte>(value);
    bytes[1] = static_cast<std::byte>(value >> 8);
}

inline void storeU32(std::span<std::byte, 4> bytes, std::uint32_t value) {
    storeU16(bytes.first<2>(), static_cast<std::uint16_t>(value));
    storeU16(bytes.last<2>(), static_cast<std::uint16_t>(value >> 16));
}

/// The bytes as text.
inline std::string_view asText(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The text in front of the first NUL, or all of it if there is none.
inline std::string_view untilNul(std::string_view text) { return text.substr(0, text.find('\0')); }

/// Fills `bytes` from the stream. On false the stream failed before the last byte.
[[nodiscard]] inline bool readExactly(std::istream& in, std::span<std::byte> bytes) {
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return !in.fail();
}
