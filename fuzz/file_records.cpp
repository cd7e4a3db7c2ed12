#include <array>
#include <span>
#include <sstream>
#include <vector>

#include <zlib.h>

#include "apply/change_journal.h"
#include "database/package_db.h"
#include "device.h"
#include "package/bytes.h"
#include "package/extract_files.h"
#include "package/part_reader.h"

/// The extraction of made-up file records, deflated here so that each mutation reaches the records. One bit of the
/// first one's mode tells whether the package is disabled.

namespace {

std::string part(PartId id, std::string_view payload) {
    std::array<std::byte, PART_HEADER_SIZE> head;
    storeU16(std::span(head).first<2>(), static_cast<std::uint16_t>(id));
    storeU32(std::span(head).last<4>(), static_cast<std::uint32_t>(payload.size()));
    return std::string(asText(head)).append(payload);
}

std::string packageOf(std::string_view records) {
    std::vector<Bytef> deflated(compressBound(records.size()));
    uLongf size = deflated.size();
    require(compress2(deflated.data(), &size, reinterpret_cast<const Bytef*>(records.data()), records.size(), 1) ==
            Z_OK);
    return "\x1E\xF1\xD0\xBA----" + part(PART_FILES, asText(deflated.data(), size));
}

bool isBelow(std::string_view directory, std::string_view path) {
    return path.starts_with(directory) && std::string(path).append("/").find("/../") == std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DeviceVisit visit;
    const DeviceState before = deviceState();
    bool isWhole = false;
    {
        PackageDb db;
        InstalledPackage package("tools");
        package.disabled = size != 0 && (data[0] & 1) != 0;
        ChangeJournal journal;
        std::stringbuf source(packageOf(asText(data, size)));
        PartReader reader(source, true, nullptr);
        reader.want({PART_FILES});
        require(reader.nextPart() == PART_FILES);
        isWhole = extractFiles(package, journal, reader, db);
        for (const auto& [target, op] : journal.ops()) {
            require(op.kind == OpKind::Staged);
            require(isBelow(package.disabled ? "/flash/x/tools/" : "/flash/", target));
            require(isBelow("/flash/", op.arg) || isBelow("/ram/", op.arg));
            require(package.files.contains(target) || !isWhole);
        }
        if (isWhole) journal.commit(false);
    }
    const DeviceState after = deviceState();
    require(isWhole || before == after);
    require(besideFlashAndRam(before) == besideFlashAndRam(after));
    return 0;
}
