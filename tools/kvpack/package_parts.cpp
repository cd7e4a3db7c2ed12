#include "kvpack/package_parts.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <vector>

namespace fs = std::filesystem;

PackageParts::PackageParts(std::string path)
    : path_(std::move(path)),
      source_(path_),
      openError_(source_.isOpen() ? 0 : errno),
      reader_(source_, true, nullptr) {
    reader_.clear();  // whatever the magic
    std::vector<PartId> everyId(0x10000);
    std::iota(everyId.begin(), everyId.end(), 0);
    reader_.want(everyId);
    std::error_code error;
    if (fs::is_regular_file(path_, error)) size_ = fs::file_size(path_, error);
    partEnd_ = std::min<std::uint64_t>(size_, FILE_HEADER_SIZE);
}

Failure PackageParts::openFailure() const {
    if (openError_ != 0) return "cannot read " + path_ + ": " + std::strerror(openError_);
    std::error_code error;
    if (!fs::is_regular_file(path_, error)) return "cannot read " + path_ + ": expected a regular file";
    return std::nullopt;
}

bool PackageParts::nextPart() {
    reader_.clear();  // reading too far in a part is no reason to stop behind it
    if (partEnd_ > size_ || reader_.nextPart() == PART_END) return false;
    partStart_ = partEnd_;
    partEnd_ = partStart_ + PART_HEADER_SIZE + reader_.partSize();
    return true;
}

std::optional<std::uint64_t> PackageParts::cutOff() const {
    if (size_ < FILE_HEADER_SIZE) return 0;
    if (partEnd_ > size_) return partStart_;
    return partEnd_ < size_ ? std::optional(partEnd_) : std::nullopt;
}

std::string readPiece(PartReader& reader) {
    std::string piece(std::min<std::uint32_t>(reader.partLeft(), 65536), '\0');
    reader.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    piece.resize(static_cast<std::size_t>(reader.gcount()));
    return piece;
}
