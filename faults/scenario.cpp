#include "faults/scenario.h"

#include <stdexcept>

namespace {

constexpr PackageVersion V7 = 0x07006600;
constexpr PackageVersion V8 = 0x08006600;
const std::string DOWNLOAD = "/rw/pckg/.download/";  // on another file system than flash
const std::string FLASH = "/flash/var/pckg/";

// Larger than the buffer of a staged file, so that not all of it is written in one piece.
const std::string BIG(20000, 'n');

void install(DeviceRoot& device, const PackageBuilder& package) {
    const Outcome result = device.run({"-"}, package.bytes());
    if (result.code != 0) throw std::runtime_error(result.out + result.err);
}

PackageBuilder oldTools() {
    return package("tools")
        .file("bin/tools", "old", 0100755)
        .file("bin/gone", "old")
        .file("lib/big", "old")
        .file("zone/info", "old");
}

PackageBuilder newTools() {
    return package("tools")
        .version(V8)
        .file("bin/tools", "new", 0100755)
        .file("lib/big", BIG)
        .file("new/sub/file", "new")
        .file("zone/info", "new");
}

/// A member is known from the image of its bundle, which does not tell its files: they stay when it goes. So the
/// one to go has none.
PackageBuilder oldSuite() {
    return bundle("suite").member(package("alpha").file("bin/alpha", "old")).member(package("beta"));
}

PackageBuilder newSuite() {
    return bundle("suite")
        .version(V8)
        .image("members")
        .disabledMember("gamma")
        .member(package("alpha").version(V8).file("bin/alpha", "new", 0100755))
        .member(package("gamma").version(V8).file("bin/gamma", "new"));
}

PackageBuilder display(PackageVersion version) {
    return package("display").version(version).image(std::string(20000, version == V8 ? 'n' : 'o'));
}

PackageBuilder core(PackageVersion version) {
    return package("core").version(version).flags(PKG_FLAG_BOOT).image(std::string(5000, 'c'));
}

/// A device with an older set of packages, of which the user has disabled one.
void installOlderSet(DeviceRoot& device) {
    install(device, oldTools());
    install(device, oldSuite());
    install(device, display(V7));
    install(device, package("radio").file("bin/radio", "old"));
    install(device, package("games").file("bin/games", "old").file("bin/level", "old"));
    device.write("/flash/var/pdb/radio/disabled", "user\n");
}

void offer(DeviceRoot& device, const std::string& directory, const PackageBuilder& suite) {
    device.write(directory + "tools.kvp", newTools().bytes());
    device.write(directory + "suite.kvp", suite.bytes());
    device.write(directory + "display.kvp", display(V8).bytes());
    device.write(directory + "radio.kvp", package("radio").version(V8).file("bin/radio", "new").bytes());
}

void prepareFlash(DeviceRoot& device) {
    installOlderSet(device);
    offer(device, FLASH, newSuite().member(package("beta").version(V8).file("bin/beta", "new")));
}

void prepareDownload(DeviceRoot& device) {
    installOlderSet(device);
    offer(device, DOWNLOAD, newSuite());
    device.write(DOWNLOAD + "spent.kvp", package("spent").flags(PKG_FLAG_DISCARD).bytes());
}

void prepareRemoval(DeviceRoot& device) {
    installOlderSet(device);
    device.write("/ram/pdb/games/schedule", "uninstall");
}

void prepareRequests(DeviceRoot& device) {
    prepareRemoval(device);
    device.write("/ram/pdb/display/schedule", "disable");
    device.write("/ram/pdb/radio/schedule", "enable");
}

void prepareBootImage(DeviceRoot& device) {
    device.environment = {{"bootimage", "1"}};
    install(device, core(V7));
    device.write("/flash/boot/kernel", "old");
    device.write(FLASH + "core.kvp", core(V8).bytes());
}

void prepareLargeFile(DeviceRoot& device) {
    install(device, package("large").file("lib/large", std::string(100000, 'o')));
    const auto newer = package("large").version(V8).file("lib/large", std::string(100000, 'n'));
    device.write(FLASH + "large.kvp", newer.bytes());
}

const std::vector<Lines> FROM_STDIN = {{"-"}};

}  // namespace

std::vector<Scenario> faultScenarios() {
    return {
        {.name = "scheduled, packages on flash", .prepare = prepareFlash},
        {.name = "scheduled, packages in the download directory",
         .prepare = prepareDownload,
         .copied = {"/flash/var/pdb/display/image", "/flash/var/pdb/suite/image"}},
        {.name = "scheduled, requests", .prepare = prepareRequests},
        {.name = "scheduled, a removal only", .prepare = prepareRemoval},
        {.name = "scheduled, boot image", .prepare = prepareBootImage},
        {.name = "scheduled, a file too large to lie beside its target",
         .prepare = prepareLargeFile,
         .copied = {"/flash/lib/large"},
         .flashSize = 256},
        {.name = "--safe, then --commit", .prepare = prepareFlash, .commands = {{"--safe"}, {"--commit"}}},
        {.name = "standard input, plain package",
         .prepare = installOlderSet,
         .commands = FROM_STDIN,
         .input = newTools().bytes()},
        {.name = "standard input, bundle",
         .prepare = installOlderSet,
         .commands = FROM_STDIN,
         .input = newSuite().bytes()},
        {.name = "standard input, image package",
         .prepare = installOlderSet,
         .commands = FROM_STDIN,
         .input = display(V8).bytes()},
    };
}
