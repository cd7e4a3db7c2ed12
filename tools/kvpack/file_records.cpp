#include "kvpack/file_records.h"

#include <algorithm>

#include "kvpack/printable.h"
#include "package/bytes.h"
#include "package/file_record.h"

std::optional<FileRecord> FileRecords::next() {
    std::array<char, 16384> passed;
    while (readData(passed) != 0) {
    }
    if (fault_) return std::nullopt;
    const auto head = readRecordHead(records_);
    if (!head) {
        if (records_.gcount() != 0) fault_ = "a file record is cut off";
        return std::nullopt;
    }
    name_.resize(head->nameLength);
    if (!records_.read(name_.data(), head->nameLength)) {
        fault_ = "a file record is cut off";
        return std::nullopt;
    }
    name_.resize(untilNul(name_).size());
    if (head->isWritten && !isUsableRecordName(name_)) {
        fault_ = "the file name \"" + printable(name_) + "\" is none that a file of the tree can have";
        return std::nullopt;
    }
    dataLeft_ = head->dataLength;
    return FileRecord{.mode = head->mode, .isWritten = head->isWritten, .size = head->dataLength, .name = name_};
}

std::size_t FileRecords::readData(std::span<char> piece) {
    const auto wanted = std::min<std::size_t>(piece.size(), dataLeft_);
    records_.read(piece.data(), static_cast<std::streamsize>(wanted));
    const auto got = static_cast<std::size_t>(records_.gcount());
    dataLeft_ -= static_cast<std::uint32_t>(got);
    if (got < wanted) fault_ = "the data of the file " + printable(name_) + " are cut off";
    return got;
}

Failure FileRecords::fault() const {
    if (fault_) return fault_;
    return inflater_.hasEnded() ? Failure() : "the compressed file records are damaged or cut off";
}
