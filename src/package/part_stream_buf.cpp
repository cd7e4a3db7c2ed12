#include "package/part_stream_buf.h"

#include <algorithm>

#include "package/bytes.h"
#include "package/container.h"

namespace {

constexpr std::uint32_t SKIP_PIECE = 16384;

std::streamsize readFrom(std::streambuf& source, std::span<std::byte> target) {
    return source.sgetn(reinterpret_cast<char*>(target.data()), static_cast<std::streamsize>(target.size()));
}

bool readAllFrom(std::streambuf& source, std::span<std::byte> target) {
    return readFrom(source, target) == static_cast<std::streamsize>(target.size());
}

const std::streambuf::pos_type SEEK_FAILED = std::streambuf::off_type(-1);

}  // namespace

PartStreamBuf::PartStreamBuf(std::streambuf& source, bool hashing, std::streambuf* tee)
    : source_(source), tee_(tee), hashing_(hashing) {}

bool PartStreamBuf::readFileHeader(std::span<std::byte> header) {
    if (!readAllFrom(source_, header)) return false;
    copyToTee(header);
    partOffset_ = static_cast<std::uint32_t>(header.size());
    return true;
}

std::int32_t PartStreamBuf::enterNextPart() {
    if (partLeft_ != 0) {
        const bool jumped =
            isSeeking() && source_.pubseekoff(partLeft_, std::ios_base::cur, std::ios_base::in) != SEEK_FAILED;
        if (!jumped && skip(partLeft_) != partLeft_) return PART_END;
    }
    partOffset_ += partSize_;
    std::array<std::byte, PART_HEADER_SIZE> header;
    if (!readAllFrom(source_, header)) return PART_END;
    copyToTee(header);
    const PartId id = loadU16(std::span(header).first<2>());
    if (hashing_) {
        // The switch comes first, so the marker's own header is in the new hash already. There is no way
        // back: it holds for the rest of the stream, also for later members of a bundle.
        if (id == PART_SHA256_MARKER && !usesSha256()) hash_.emplace<SHA256>();
        if (id == PART_PACKAGE_HEADER) finishDigest();
        updateHash(header);
    }
    partSize_ = partLeft_ = loadU32(std::span(header).last<4>());
    partOffset_ += static_cast<std::uint32_t>(header.size());
    return id;
}

bool PartStreamBuf::takeRaw(std::span<std::byte> bytes) {
    if (!readAllFrom(source_, bytes)) return false;
    copyToTee(bytes);
    partLeft_ -= static_cast<std::uint32_t>(bytes.size());
    return true;
}

void PartStreamBuf::finishDigest() {
    if (auto* sha256 = std::get_if<SHA256>(&hash_))
        sha256->finish(digest_);
    else
        std::get<SHA1>(hash_).finish(std::span(digest_).first<SHA1::DIGEST_SIZE>());
}

void PartStreamBuf::updateHash(std::span<const std::byte> bytes) {
    std::visit([bytes](auto& hash) { hash.update(bytes); }, hash_);
}

void PartStreamBuf::copyToTee(std::span<const std::byte> bytes) {
    // The tee's owner finds out about a failed write when it closes the tee.
    if (tee_ != nullptr)
        (void)tee_->sputn(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// Hashes and copies payload bytes that have just been consumed, but for those that were put back before.
void PartStreamBuf::pass(std::span<const std::byte> bytes) {
    if (hashSkip_ > bytes.size()) {
        hashSkip_ -= static_cast<std::uint32_t>(bytes.size());
        return;
    }
    const auto fresh = bytes.subspan(hashSkip_);
    hashSkip_ = 0;
    copyToTee(fresh);
    if (hashing_) updateHash(fresh);
}

/// Reads up to the size of `target` from the source and passes what came. Returns its length.
std::uint32_t PartStreamBuf::feed(std::span<std::byte> target) {
    const auto got = static_cast<std::uint32_t>(readFrom(source_, target));
    pass(target.first(got));
    return got;
}

/// Passes `count` bytes by reading them. Returns how many came.
std::uint32_t PartStreamBuf::skip(std::uint32_t count) {
    std::array<std::byte, SKIP_PIECE> scratch;
    std::uint32_t done = 0;
    while (done < count) {
        const auto piece = std::min(count - done, SKIP_PIECE);
        const auto got = feed(std::span(scratch).first(piece));
        done += got;
        if (got < piece) break;
    }
    return done;
}

std::streamsize PartStreamBuf::xsgetn(char* target, std::streamsize length) {
    // In 64 bits: a stream size of 32 bits holds no part of 2 GiB.
    const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(length, partLeft_));
    if (wanted == 0) return 0;
    const auto got = feed({reinterpret_cast<std::byte*>(target), wanted});
    partLeft_ -= got;
    return static_cast<std::streamsize>(got);
}

PartStreamBuf::pos_type PartStreamBuf::seekoff(off_type offset, std::ios_base::seekdir from,
                                               std::ios_base::openmode mode) {
    off_type position = offset;
    if (from == std::ios_base::cur) position += partSize_ - partLeft_;
    if (from == std::ios_base::end) position = off_type(partSize_) - offset;  // counts backwards
    return seekpos(position, mode);
}

PartStreamBuf::pos_type PartStreamBuf::seekpos(pos_type position, std::ios_base::openmode mode) {
    const off_type wanted = position;
    if (wanted < 0 || wanted > off_type(partSize_)) return SEEK_FAILED;
    const auto left = static_cast<std::uint32_t>(off_type(partSize_) - wanted);
    if (left == partLeft_) return position;
    const bool jumped = isSeeking() && source_.pubseekpos(off_type(partOffset_) + wanted, mode) != SEEK_FAILED;
    if (!jumped) {
        if (partLeft_ < left) return SEEK_FAILED;
        if (skip(partLeft_ - left) != partLeft_ - left) return SEEK_FAILED;
    }
    partLeft_ = left;
    return position;
}

std::streamsize PartStreamBuf::showmanyc() {
    return static_cast<std::streamsize>(std::min<std::int64_t>(partLeft_, source_.in_avail()));
}

PartStreamBuf::int_type PartStreamBuf::underflow() { return partLeft_ == 0 ? traits_type::eof() : source_.sgetc(); }

PartStreamBuf::int_type PartStreamBuf::uflow() {
    if (partLeft_ == 0) return traits_type::eof();
    const int_type character = source_.sbumpc();
    --partLeft_;
    if (traits_type::eq_int_type(character, traits_type::eof())) return character;
    const auto byte = static_cast<std::byte>(character);
    pass({&byte, 1});
    return character;
}

PartStreamBuf::int_type PartStreamBuf::pbackfail(int_type character) {
    if (partSize_ == partLeft_) return traits_type::eof();
    const int_type put = traits_type::eq_int_type(character, traits_type::eof())
                             ? source_.sungetc()
                             : source_.sputbackc(traits_type::to_char_type(character));
    if (traits_type::eq_int_type(put, traits_type::eof())) return put;
    ++partLeft_;
    if (!isSeeking()) ++hashSkip_;
    return put;
}
