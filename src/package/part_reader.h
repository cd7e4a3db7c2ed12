#pragma once

#include <cstdint>
#include <initializer_list>
#include <istream>
#include <memory>
#include <span>
#include <vector>

#include "package/container.h"
#include "package/part_stream_buf.h"

/// Input stream over one package, in a single forward pass over a source that need not seek. It stands on
/// one part at a time, and read, seekg and tellg work inside that part: a read never runs into the next
/// one, and tellg counts the payload bytes consumed. On its way it skips every part that was not asked
/// for, and feeds the running hash and the tee (see PartStreamBuf).
///
/// It neither prints nor throws. All failure is the state of the stream and the part id PART_END: a source
/// too short for the file header or with a wrong magic gives the bad state, and a source that ends inside
/// a part or a part header the end and fail states. Once fail or bad is set, every nextPart() gives
/// PART_END.
class PartReader final : public std::istream {
public:
    /// Reads the file header at once. `source` and `tee` have to outlive the reader; `tee` may be null.
    PartReader(std::streambuf& source, bool hashing, std::streambuf* tee);

    /// Asks for parts of these ids, in addition to those asked for before. To be called before the first
    /// nextPart().
    void want(std::initializer_list<PartId> ids) { want(std::span(ids)); }
    void want(std::span<const PartId> ids) { wanted_.insert(wanted_.end(), ids.begin(), ids.end()); }

    /// Skips what is left of the current part and every part that nobody wants. Returns the id of the next
    /// wanted part, or PART_END.
    PartId nextPart();

    PartId partId() const { return partId_; }                ///< what nextPart() returned last
    std::uint32_t magic() const { return magic_; }           ///< all bits set if there was no file header
    std::uint32_t packageLength() const { return length_; }  ///< as the file header claims; 0 without one

    std::uint32_t partSize() const { return buffer_->partSize(); }
    std::uint32_t partOffset() const { return buffer_->partOffset(); }
    std::uint32_t partLeft() const { return buffer_->partLeft(); }

    bool isHashing() const { return buffer_->isHashing(); }
    bool usesSha256() const { return buffer_->usesSha256(); }
    void finishDigest() { buffer_->finishDigest(); }
    auto digest() const { return buffer_->digest(); }
    [[nodiscard]] bool takeRaw(std::span<std::byte> bytes) { return buffer_->takeRaw(bytes); }

private:
    std::unique_ptr<PartStreamBuf> buffer_;
    std::vector<PartId> wanted_;
    PartId partId_ = PART_END;
    std::uint32_t magic_ = 0xFFFFFFFF;
    std::uint32_t length_ = 0;
};
