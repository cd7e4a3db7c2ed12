#include "planning/directory_scan.h"

#include <sys/stat.h>

#include "package/package_header.h"
#include "package/part_reader.h"
#include "planning/branding_probe.h"
#include "planning/device_mode.h"
#include "platform/directory_entries.h"
#include "platform/file_exists.h"
#include "platform/file_source.h"
#include "platform/read_file.h"

namespace {

constexpr const char* FIRMWARE_PROPERTY = "/sys/firmware/devicetree/base/firmware-package";

bool isPackageName(const std::string& name) {
    return !name.starts_with('.') && (name.ends_with(".kvp") || name.ends_with(".dpk"));
}

/// Reads the headers of a bundle's members. The reader stands behind the bundle's own. False if there is none,
/// or one is cut off.
bool readMembers(PackageFile& bundle, PartReader& reader) {
    while (true) {
        if (reader.partId() == PART_IMAGE) reader.nextPart();
        if (reader.partId() != PART_PACKAGE_HEADER) return !bundle.members.empty();
        PackageInfo member("");
        if (!parsePackageHeader(member, reader)) return false;
        bundle.members.push_back(std::move(member));
    }
}

/// False if the file is no whole package.
bool readPackage(PackageFile& package) {
    FileSource file(package.path);
    PartReader reader(file, true, nullptr);
    struct stat status;
    // A file that is still being written has another length than it claims.
    if (::stat(package.path.c_str(), &status) == 0 && status.st_size != off_t(reader.packageLength())) return false;
    reader.want({PART_BUNDLE_HEADER, PART_PACKAGE_HEADER, PART_TEXT24, PART_ARCHITECTURE, PART_TEXT2, PART_NOTE,
                 PART_DEPENDENCIES, PART_PROVIDES, PART_CONFLICTS, PART_IMAGE});
    reader.nextPart();
    return parsePackageHeader(package, reader) && (!package.isBundle || readMembers(package, reader));
}

/// Whether a firmware package is the one that fits this device; reports it if not.
bool isFittingFirmware(const PackageFile& package, PackageDb& db) {
    if (!fileExists(FIRMWARE_PROPERTY)) {
        db.error("can not install %s: not for this platform", nameVersion(package).c_str());
        return false;
    }
    std::string fitting = dx::readFile(FIRMWARE_PROPERTY, 0xFFFFFFFF);
    if (fitting.ends_with('\0')) fitting.pop_back();  // a device-tree string brings its NUL along
    if (fitting == package.name) return true;
    db.error("can not install %s: use %s package instead", nameVersion(package).c_str(), fitting.c_str());
    return false;
}

/// Whether the package is meant for this device as it stands; reports it if not.
bool suitsDevice(const PackageFile& package, PackageDb& db) {
    if (!package.arch.empty() && package.arch != db.arch) {
        db.warning("can not install %s: it is not made for %s, but for %s", nameVersion(package).c_str(),
                   db.arch.c_str(), package.arch.c_str());
        return false;
    }
    if (package.name == "branding" && !brandingStaysProtected(package.path)) {
        db.error("can not replace protected branding with non-protected");
        return false;
    }
    if (package.name.starts_with("firmware-") && !isFittingFirmware(package, db)) return false;
    if (!allowedByDeviceMode(package) && !fileExists("/ram/SECURE")) {
        db.error("will not install package %s, not allowed by device-mode", nameVersion(package).c_str());
        return false;
    }
    return true;
}

}  // namespace

void scanPackageDirectory(const std::string& directory, std::vector<std::unique_ptr<PackageFile>>& candidates,
                          PackageDb& db) {
    const auto names = directoryEntries(directory);
    if (!names) return;
    for (const std::string& name : *names) {
        if (!isPackageName(name)) continue;
        auto package = std::make_unique<PackageFile>(directory + name);
        if (!readPackage(*package))
            db.error("broken package %s", name.c_str());
        else if (suitsDevice(*package, db))
            candidates.push_back(std::move(package));
    }
}
