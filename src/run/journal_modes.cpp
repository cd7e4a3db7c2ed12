#include "run/journal_modes.h"

#include <iostream>

#include <unistd.h>

#include "apply/change_journal.h"

namespace {

constexpr const char* MANIFEST = "/ram/MANIFEST";

}  // namespace

void runCommitMode() {
    ChangeJournal journal;
    journal.readManifest(MANIFEST);
    std::cout << "finishing install... " << std::flush;
    journal.commit(true);
    std::cout << "\b \n" << std::flush;  // wipes the spinner
}

void runCancelMode() {
    ChangeJournal journal;
    journal.readManifest(MANIFEST);
    journal.cancel();
    (void)::unlink(MANIFEST);
}
