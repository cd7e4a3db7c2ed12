#include "run/scheduled_mode.h"

#include <cerrno>

#include "apply/disk_space.h"
#include "console/post_log.h"
#include "planning/state_changes.h"
#include "run/child_process.h"
#include "run/scheduled_upgrade.h"

namespace {

/// A shortage as it is told, in kB: a byte more than a whole number counts as one more, and so does none.
std::int32_t shortageInKb(std::int64_t bytesLeft) { return static_cast<std::int32_t>(-bytesLeft / 1024 + 1); }

/// Whether the journal fits on the disk; reports it if not.
bool fits(const ChangeJournal& journal, Reporter& reporter) {
    const DiskSpace space = checkDiskSpace(journal);
    if (space.kernelBytes < 0)
        reporter.error("upgrade failed, free %d kB of kernel disk space", shortageInKb(space.kernelBytes));
    if (space.diskBytes < 0) reporter.error("upgrade failed, free %d kB of disk space", shortageInKb(space.diskBytes));
    return space.suffices();
}

}  // namespace

int runScheduledMode(PackageDb& db, const RunOptions& options) {
    ChangeJournal journal;
    applySchedule(db, journal, 1);
    auto installed = runScheduledUpgrade(db, journal, options.installFlags | allowUpgrade);
    int result = 0;
    if ((options.installFlags & allowSameVersion) == 0 && !fits(journal, db)) {
        journal.cancel();
        installed.clear();
        result = ENOSPC;
    }
    for (const PackageInfo& package : installed) db.info("installed %s", nameVersion(package).c_str());

    if (!journal.empty()) {
        journal.stageMarker("/flash/PCKGS_CHANGED");
        if (options.commitAtEnd) {
            journal.commit(false);
            (void)runAndWait("/bin/vorn", "vorn", "/flash/boot");
        } else {
            journal.writeManifest("/ram/MANIFEST");
        }
    }
    flushPostLog(db);
    return result;
}
