#include "planning/branding_probe.h"

#include <cstdio>
#include <optional>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "package/part_reader.h"
#include "platform/file_exists.h"
#include "platform/file_source.h"
#include "platform/loop_device.h"

namespace {

constexpr const char* RUNNING_MARKER = "/pckg/branding/FORCE_DEFCONF_ON_RESET";
constexpr const char* MOUNT_POINT = "/ram/branding";
constexpr const char* MOUNTED_MARKER = "/ram/branding/FORCE_DEFCONF_ON_RESET";

/// Offset of the image in a package file, in bytes. Nothing if it has none that the loop driver could reach.
std::optional<int> imageOffset(const std::string& path) {
    FileSource file(path);
    PartReader reader(file, true, nullptr);
    reader.want({PART_IMAGE});
    const auto offset = static_cast<int>(reader.nextPart() == PART_IMAGE ? reader.partOffset() : 0xFFFFFFFF);
    return offset < 0 ? std::nullopt : std::optional(offset);
}

bool hasMarker(const std::string& devicePath) {
    if (::mount(devicePath.c_str(), MOUNT_POINT, "squashfs", MS_RDONLY, nullptr) != 0) {
        ::perror("mount squash");
        return false;
    }
    const bool found = fileExists(MOUNTED_MARKER);
    (void)::umount(MOUNT_POINT);
    return found;
}

}  // namespace

bool brandingStaysProtected(const std::string& path) {
    if (!fileExists(RUNNING_MARKER)) return true;
    const auto offset = imageOffset(path);
    if (!offset) return false;

    // Declared in the order that the clean-up takes backwards: detach, close the device, close the candidate.
    UniqueFd candidate;
    std::string devicePath;
    const UniqueFd device = openFreeLoopDevice(devicePath);
    if (!device) return false;
    (void)::mkdir("/ram", 0755);
    (void)::mkdir(MOUNT_POINT, 0755);
    candidate = UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!candidate) {
        ::perror("open");
        return false;
    }
    const LoopAttachment attachment(device, candidate, *offset, path);
    return attachment.isAttached() && hasMarker(devicePath);
}
