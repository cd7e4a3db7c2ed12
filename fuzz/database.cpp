#include <algorithm>

#include "apply/change_journal.h"
#include "database/package_db.h"
#include "device.h"
#include "planning/state_changes.h"

/// Whatever stands in the database directory: the table is printed, and a plan is made for what it asks for.

namespace {

bool isAnyActive(const PackageDb& db) {
    return std::ranges::any_of(db.packages, [](const auto& package) { return !package->disabled; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DeviceVisit visit;
    writeFiles(asText(data, size), "/flash/var/pdb/");
    const DeviceState before = deviceState();
    require(runInstaller({"--show"}) == 0);
    {
        PackageDb db;
        db.load(false, "i386");
        const bool wasAnyActive = isAnyActive(db);
        ChangeJournal journal;
        applySchedule(db, journal, 2);
        require(isAnyActive(db) || !wasAnyActive);
    }
    require(before == deviceState());
    return 0;
}
