#include "kvpack/files_part.h"

#include <array>

#include "package/bytes.h"
#include "package/file_record.h"

std::string recordHead(std::string_view name, std::uint32_t mode, std::uint32_t length) {
    std::array<std::byte, RECORD_HEAD_SIZE> head{};
    const std::span bytes(head);
    storeU16(bytes.first<2>(), static_cast<std::uint16_t>(mode));
    storeU32(bytes.subspan<RECORD_DATA_LENGTH_OFFSET, 4>(), length);
    storeU16(bytes.subspan<RECORD_NAME_LENGTH_OFFSET, 2>(), static_cast<std::uint16_t>(name.size()));
    return std::string(asText(head)).append(name);
}

FilesPart::FilesPart(PackageWriter& writer) : writer_(writer) {
    (void)deflateInit(&zstream_, Z_BEST_COMPRESSION);
    writer_.beginPart(PART_FILES);
}

FilesPart::~FilesPart() { (void)deflateEnd(&zstream_); }

void FilesPart::write(std::string_view bytes) {
    zstream_.next_in = reinterpret_cast<const Bytef*>(bytes.data());
    zstream_.avail_in = static_cast<uInt>(bytes.size());
    deflateAll(Z_NO_FLUSH);
}

void FilesPart::finish() {
    deflateAll(Z_FINISH);
    writer_.endPart();
}

void FilesPart::deflateAll(int flush) {
    do {
        zstream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
        zstream_.avail_out = static_cast<uInt>(buffer_.size());
        (void)deflate(&zstream_, flush);
        writer_.write({buffer_.data(), buffer_.size() - zstream_.avail_out});
    } while (zstream_.avail_out == 0);
}
