#include "package/block_hash.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>

namespace {

using State = std::array<std::uint32_t, 8>;
using Block = std::array<std::byte, 64>;

// The first 32 bits of the fractional parts of the square roots of the 17th to the 24th prime.
constexpr State blockHashInit = {0xae5f9156, 0xcf6c85d3, 0x2f73477d, 0x6d1826ca,
                                 0x8b43d457, 0xe360b596, 0x1c456002, 0x6f196331};

// The first 32 bits of the fractional parts of the cube roots of the 65th to the 128th prime.
constexpr std::array<std::uint32_t, 64> blockHashConstants = {
    0xca273ece, 0xd186b8c7, 0xeada7dd6, 0xf57d4f7f, 0x06f067aa, 0x0a637dc5, 0x113f9804, 0x1b710b35,
    0x28db77f5, 0x32caab7b, 0x3c9ebe0a, 0x431d67c4, 0x4cc5d4be, 0x597f299c, 0x5fcb6fab, 0x6c44198c,
    0x7ba0ea2d, 0x7eabf2d0, 0x8dbe8d03, 0x90bb1721, 0x99a2ad45, 0x9f86e289, 0xa84c4472, 0xb3df34fc,
    0xb99bb8d7, 0xbc76cbab, 0xc226a69a, 0xd304f19a, 0xde1be20a, 0xe39bb437, 0xee84927c, 0xf3edd277,
    0xfbfdfe53, 0x0bee2c7a, 0x0e90181c, 0x25f57204, 0x2da45582, 0x3a52c34c, 0x41dc0172, 0x495796fc,
    0x4bd31fc6, 0x533cde21, 0x5f7abfe3, 0x66c206b3, 0x6dfcc6bc, 0x7062f20f, 0x778d5127, 0x7eaba3cc,
    0x8363eccc, 0x85be1c25, 0x93c04028, 0x9f4a205f, 0xa1953565, 0xa627bb0f, 0xacfa8089, 0xb3c29b23,
    0xb602f6fa, 0xc36cee0a, 0xc7dc81ee, 0xce7b8471, 0xd740288c, 0xe21dba7a, 0xeabbff66, 0xf56a9e60};

std::uint32_t loadBigEndian(std::span<const std::byte, 4> bytes) {
    std::uint32_t word = 0;
    for (const std::byte byte : bytes) word = word << 8 | std::to_integer<std::uint32_t>(byte);
    return word;
}

void storeBigEndian(std::span<std::byte, 4> bytes, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<std::byte>(word >> (24 - 8 * i));
}

/// The input, one bit, zeros and the length in bits, as FIPS 180-4 pads the last block of a message.
Block padded(std::span<const std::byte> input) {
    Block block{};
    std::ranges::copy(input, block.begin());
    block[input.size()] = std::byte{0x80};
    storeBigEndian(std::span(block).last<4>(), static_cast<std::uint32_t>(input.size() * 8));
    return block;
}

std::array<std::uint32_t, 64> messageSchedule(const Block& block) {
    std::array<std::uint32_t, 64> words;
    for (std::size_t i = 0; i < 16; ++i) words[i] = loadBigEndian(std::span(block).subspan(4 * i).first<4>());
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t a = words[i - 15];
        const std::uint32_t b = words[i - 2];
        const std::uint32_t sigma0 = std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3;
        const std::uint32_t sigma1 = std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10;
        words[i] = sigma1 + words[i - 7] + sigma0 + words[i - 16];
    }
    return words;
}

State compress(const Block& block) {
    const auto words = messageSchedule(block);
    auto [a, b, c, d, e, f, g, h] = blockHashInit;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t choice = (e & f) ^ (~e & g);
        const std::uint32_t t1 = h + sum1 + choice + blockHashConstants[i] + words[i];
        const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + sum0 + majority;
    }
    State state = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) state[i] += blockHashInit[i];
    return state;
}

}  // namespace

std::array<std::byte, 32> blockHash(std::span<const std::byte> input) {
    assert(input.size() <= 55);
    const State state = compress(padded(input));
    std::array<std::byte, 32> digest;
    for (std::size_t i = 0; i < state.size(); ++i)
        storeBigEndian(std::span(digest).subspan(4 * i).first<4>(), state[i]);
    return digest;
}
