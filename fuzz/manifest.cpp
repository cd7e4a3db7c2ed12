#include "apply/change_journal.h"
#include "device.h"

/// A made-up manifest: dropped, read and written again, and applied.

namespace {

constexpr const char* MANIFEST = "/ram/MANIFEST";

ChangeJournal::Ops opsIn(const std::string& path) {
    ChangeJournal journal;
    journal.readManifest(path);
    return journal.ops();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DeviceVisit visit;
    for (const char* path : {"/flash/a", "/flash/tmpAAAAAA", "/flash/d/a", "/flash/d/.a", "/ram/tmpAAAAAA", "/rw/a"})
        writeFile(path, path);

    const DeviceState before = deviceState();
    writeFile(MANIFEST, asText(data, size));
    require(runInstaller({"--cancel"}) == 0);
    require(before == deviceState());

    writeFile(MANIFEST, asText(data, size));
    ChangeJournal journal;
    journal.readManifest(MANIFEST);
    journal.writeManifest("/ram/copy");
    require(opsIn("/ram/copy") == journal.ops());

    require(runInstaller({"--commit"}) == 0);
    return 0;
}
