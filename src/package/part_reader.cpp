#include "package/part_reader.h"

#include <algorithm>
#include <array>

#include "package/bytes.h"

PartReader::PartReader(std::streambuf& source, bool hashing, std::streambuf* tee)
    : std::istream(nullptr), buffer_(std::make_unique<PartStreamBuf>(source, hashing, tee)) {
    rdbuf(buffer_.get());
    std::array<std::byte, FILE_HEADER_SIZE> header;
    if (buffer_->readFileHeader(header)) {
        magic_ = loadU32(std::span(header).first<4>());
        length_ = loadU32(std::span(header).last<4>()) + static_cast<std::uint32_t>(FILE_HEADER_SIZE);
    }
    if (!isPackageMagic(magic_)) setstate(badbit);
}

PartId PartReader::nextPart() {
    partId_ = PART_END;
    if (fail()) return partId_;
    clear(rdstate() & ~eofbit);
    do {
        partId_ = buffer_->enterNextPart();
    } while (partId_ != PART_END && std::ranges::find(wanted_, partId_) == wanted_.end());
    if (partId_ == PART_END) setstate(eofbit | failbit);
    return partId_;
}
