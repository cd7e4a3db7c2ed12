#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <span>
#include <streambuf>
#include <variant>

#include "platform/cipherkit.h"

/// Stream buffer over the current part of a package. It keeps no get area: no byte is taken from the
/// source ahead of its consumer, and partLeft() is exact at all times. Every payload byte that passes goes
/// through the running hash if hashing is on, and to the tee if there is one, each byte once.
///
/// A buffer with neither hashing nor tee is in seeking mode: it seeks in its source where that works.
/// Any other never seeks, so everything that it passes is read.
class PartStreamBuf final : public std::streambuf {
public:
    static constexpr std::size_t DIGEST_SIZE = SHA256::DIGEST_SIZE;

    /// `source` and `tee` are looked on, not owned; `tee` may be null.
    PartStreamBuf(std::streambuf& source, bool hashing, std::streambuf* tee);

    /// Reads the bytes in front of the first part. They go to the tee and into no hash. False if the
    /// source ends before.
    [[nodiscard]] bool readFileHeader(std::span<std::byte> header);

    /// Leaves the current part, skipping what is left of it, and takes the next one, whichever it is.
    /// Returns its id, or PART_END when the source ends before its part header is whole.
    std::int32_t enterNextPart();

    /// Reads from the source past the hash. The bytes still go to the tee and count as consumed. On a short
    /// read the result is false and nothing else changes.
    [[nodiscard]] bool takeRaw(std::span<std::byte> bytes);

    /// Ends the running hash into digest(). What is hashed from here on is a new message.
    void finishDigest();

    bool isHashing() const { return hashing_; }

    /// Whether the running hash has been switched to SHA-256, so that digest() has 32 bytes and not 20.
    bool usesSha256() const { return std::holds_alternative<SHA256>(hash_); }

    /// Result of the last finishDigest(); SHA-1 fills the first 20 bytes only.
    std::span<const std::byte, DIGEST_SIZE> digest() const { return digest_; }

    std::uint32_t partOffset() const { return partOffset_; }  ///< of the first payload byte in the source
    std::uint32_t partSize() const { return partSize_; }      ///< of the whole payload, in bytes
    std::uint32_t partLeft() const { return partLeft_; }      ///< payload bytes not yet consumed

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;
    std::streamsize showmanyc() override;
    std::streamsize xsgetn(char* target, std::streamsize length) override;
    int_type underflow() override;
    int_type uflow() override;
    int_type pbackfail(int_type character) override;

private:
    bool isSeeking() const { return !hashing_ && tee_ == nullptr; }
    void updateHash(std::span<const std::byte> bytes);
    void copyToTee(std::span<const std::byte> bytes);
    void pass(std::span<const std::byte> bytes);
    std::uint32_t feed(std::span<std::byte> target);
    std::uint32_t skip(std::uint32_t count);

    std::streambuf& source_;
    std::streambuf* tee_;
    bool hashing_;
    std::variant<SHA1, SHA256> hash_;
    std::array<std::byte, DIGEST_SIZE> digest_{};
    std::uint32_t partOffset_ = 0;
    std::uint32_t partSize_ = 0;
    std::uint32_t partLeft_ = 0;
    std::uint32_t hashSkip_ = 0;  // bytes next to come that were put back, so hashed and copied already
};
