#include <algorithm>
#include <cerrno>

#include "device.h"
#include "run/child_process.h"

/// A scheduled upgrade with whatever the download directory, the database and the requests hold.

namespace {

bool isCommitted = false;

/// What a run may change without a commit: the configuration request, the log, the permit, and candidates that are to
/// be discarded.
constexpr std::string_view FREE_TO_CHANGE[] = {"/rw/CONVERT",     "/flash/postlog",   "/ram/SECURE",
                                               "/flash/rw/pckg/", "/flash/var/pckg/", "/rw/pckg/"};

DeviceState stateToKeep() {
    DeviceState state = deviceState();
    std::erase_if(state, [](const auto& entry) {
        return std::ranges::any_of(FREE_TO_CHANGE, [&](auto path) { return entry.first.starts_with(path); });
    });
    return state;
}

}  // namespace

/// In place of the product's own: the boot-stage program that follows a commit has no part in this.
int runAndWait(const char* /*path*/, const char* /*arg0*/, const char* /*arg1*/) {
    isCommitted = true;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DeviceVisit visit;
    writeFiles(asText(data, size), "/rw/pckg/.download/");
    const DeviceState before = stateToKeep();
    isCommitted = false;
    const int code = runInstaller({});
    require(code == 0 || (code == ENOSPC && !isCommitted));
    require(isCommitted || before == stateToKeep());
    return 0;
}
