#include <algorithm>
#include <cstdlib>

#include "apply/change_journal.h"
#include "database/package_db.h"
#include "device.h"
#include "package/container.h"
#include "planning/state_changes.h"

/// Packages from standard input, one after the other on one device. Each begins with its magic. The low bits of the
/// length that it claims, which only the progress bar looks at, choose how the installer is called.

namespace {

constexpr std::string_view MAGICS[] = {"\x1E\xF1\xD0\xBA", "\xFB\x0F\x10\xA1"};
constexpr std::size_t LENGTH_OFFSET = 4;
constexpr int MAX_PACKAGES = 4;

std::string_view takePackage(std::string_view& rest) {
    auto end = rest.size();
    for (const std::string_view magic : MAGICS) end = std::min(end, rest.find(magic, 1));
    const std::string_view package = rest.substr(0, end);
    rest.remove_prefix(end);
    return package;
}

/// Whether a run would leave the records as they stand if it had nothing to install.
bool isSettled() {
    PackageDb db;
    db.load(true, "i386");
    ChangeJournal journal;
    return !applySchedule(db, journal, 0);
}

/// What no run without success may change: not the configuration request, and not the log.
DeviceState stateToKeep() {
    DeviceState state = deviceState();
    state.erase("/rw/CONVERT");
    state.erase("/flash/postlog");
    return state;
}

std::vector<std::string> commandLine(unsigned bits) {
    std::vector<std::string> arguments;
    if ((bits & 1) != 0) arguments.emplace_back("-down");
    if ((bits & 2) != 0) arguments.emplace_back("--reinstall");
    arguments.emplace_back("-");
    return arguments;
}

/// state: of the device, before and after.
void install(std::string_view package, DeviceState& state) {
    const unsigned bits = package.size() > LENGTH_OFFSET ? static_cast<unsigned char>(package[LENGTH_OFFSET]) : 0;
    if ((bits & 12) == 12)
        (void)::setenv("bootimage", "1", 1);
    else
        (void)::unsetenv("bootimage");
    const bool wasSettled = isSettled();
    const int code = runInstaller(commandLine(bits), package);
    require(code >= -1 && code <= 3);
    DeviceState after = stateToKeep();
    require(code == 0 || !wasSettled || after == state);
    require(besideFlashAndRam(after) == besideFlashAndRam(state));
    state = std::move(after);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DeviceVisit visit;
    DeviceState state = stateToKeep();
    std::string_view rest = asText(data, size);
    for (int count = 0; count < MAX_PACKAGES && !rest.empty(); ++count) install(takePackage(rest), state);
    return 0;
}
