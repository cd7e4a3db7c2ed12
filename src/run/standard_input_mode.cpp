#include "run/standard_input_mode.h"

#include <iostream>

#include <fcntl.h>
#include <unistd.h>

#include "apply/install_stream.h"
#include "console/post_log.h"
#include "planning/state_changes.h"
#include "platform/file_sink.h"
#include "platform/file_source.h"
#include "platform/unique_fd.h"

namespace {

// One file under two forms of its path. The second is its key in the journal.
constexpr const char* SPOOL_FILE = "/flash/var/pdb//image";
constexpr const char* SPOOL_SOURCE = "/flash/var/pdb/image";

void stageImage(ChangeJournal& journal, const ImageTarget& target) {
    const std::string image = target.directory + "image";
    if (target.bootImage) {
        journal.addMove(SPOOL_SOURCE, "/flash/bootimage");
        journal.addLink("/flash/bootimage", image);
    } else {
        journal.addMove(SPOOL_SOURCE, image);
    }
}

}  // namespace

int runStandardInputMode(PackageDb& db, const RunOptions& options) {
    ChangeJournal journal;
    applySchedule(db, journal, 1);
    FileSink spool(UniqueFd{::open(SPOOL_FILE, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)});
    if (!spool.isOpen()) {
        std::cout << "ERROR: could not open image\n" << std::flush;
        return -1;
    }

    const ChangeJournal::Ops requested = journal.ops();
    const CarriedStates noStates;
    const InstallContext context = {
        .db = db, .journal = journal, .flags = options.installFlags | allowUpgrade, .carriedStates = noStates};
    FileSource input(UniqueFd{::dup(STDIN_FILENO)});
    ImageTarget image;
    image.isStream = true;
    InstallResult result = installStream(context, input, &spool, image);
    const bool isKept = result == InstallResult::Installed && !image.directory.empty();
    if (!spool.finish() && isKept) {
        db.error("could not write image");
        result = InstallResult::Failed;
    }

    if (result == InstallResult::Installed && isKept)
        stageImage(journal, image);
    else
        (void)::unlink(SPOOL_SOURCE);
    if (result == InstallResult::Installed)
        journal.stageMarker("/flash/PCKGS_CHANGED");
    else if (journal.ops() != requested)
        journal.cancel();  // half an installation is none
    journal.commit(false);
    flushPostLog(db);
    return static_cast<int>(result);
}
