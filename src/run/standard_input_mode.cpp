#include "run/standard_input_mode.h"

#include <fstream>
#include <iostream>

#include <unistd.h>

#include "apply/install_stream.h"
#include "console/post_log.h"
#include "planning/state_changes.h"
#include "platform/file_source.h"
#include "platform/unique_fd.h"

namespace {

// One file under two forms of its path. The second is its key in the journal.
constexpr const char* SPOOL_FILE = "/flash/var/pdb//image";
constexpr const char* SPOOL_SOURCE = "/flash/var/pdb/image";

/// The stream as it is read. It remembers a failed write, as nobody looks at the result of one.
class Spool final : public std::filebuf {
public:
    /// Closes the file. False if it does not hold every byte.
    [[nodiscard]] bool finish() { return close() != nullptr && isWhole_; }

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize length) override {
        const auto put = std::filebuf::xsputn(bytes, length);
        isWhole_ &= put == length;
        return put;
    }

private:
    bool isWhole_ = true;
};

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
    Spool spool;
    if (spool.open(SPOOL_FILE, std::ios::out | std::ios::binary) == nullptr) {
        std::cout << "ERROR: could not open image\n" << std::flush;
        return -1;
    }

    const ChangeJournal::Ops requested = journal.ops();
    const CarriedStates noStates;
    const InstallContext context = {.db = db,
                                    .journal = journal,
                                    .flags = options.installFlags | allowUpgrade,
                                    .carriedStates = noStates};
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
