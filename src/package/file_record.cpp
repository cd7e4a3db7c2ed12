#include "package/file_record.h"

#include <algorithm>
#include <array>
#include <span>

#include <sys/stat.h>

#include "package/bytes.h"

std::optional<RecordHead> readRecordHead(std::istream& records) {
    std::array<std::byte, RECORD_HEAD_SIZE> head;
    if (!readExactly(records, head)) return std::nullopt;
    const std::span bytes(head);
    const std::uint32_t mode = loadU16(bytes.first<2>());
    return RecordHead{.mode = mode,
                      .isWritten = S_ISREG(mode) && bytes[RECORD_SKIP_OFFSET] == std::byte{0},
                      .dataLength = loadU32(bytes.subspan<RECORD_DATA_LENGTH_OFFSET, 4>()),
                      .nameLength = loadU16(bytes.subspan<RECORD_NAME_LENGTH_OFFSET, 2>())};
}

bool isUsableRecordName(std::string_view name) {
    if (name.empty() || name.ends_with('/')) return false;
    while (!name.empty()) {
        const auto component = name.substr(0, name.find('/'));
        if (component == "..") return false;
        name.remove_prefix(std::min(name.size(), component.size() + 1));
    }
    return true;
}
