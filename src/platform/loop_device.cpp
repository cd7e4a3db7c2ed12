#include "platform/loop_device.h"

#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>

namespace {

/// Tells on standard error which step of the machinery failed, if it did.
bool succeeded(int result, const char* step) {
    if (result < 0) ::perror(step);
    return result >= 0;
}

}  // namespace

UniqueFd openFreeLoopDevice(std::string& path) {
    const UniqueFd control(::open("/dev/loop-control", O_RDONLY | O_CLOEXEC));
    if (!succeeded(control.get(), "loop-control")) return {};
    const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE, 0);
    if (!succeeded(number, "GET_FREE")) return {};
    path = "/dev/loop" + std::to_string(number);
    UniqueFd device(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    (void)succeeded(device.get(), "dev open");
    return device;
}

LoopAttachment::LoopAttachment(const UniqueFd& device, const UniqueFd& file, int offset, const std::string& name)
    : device_(device.get()), isBound_(succeeded(::ioctl(device_, LOOP_SET_FD, file.get()), "SET_FD")) {
    loop_info info{};
    info.lo_offset = offset;
    info.lo_flags = LO_FLAGS_READ_ONLY;
    std::memcpy(info.lo_name, name.data(), std::min<std::size_t>(name.size(), LO_NAME_SIZE));
    isReady_ = isBound_ && succeeded(::ioctl(device_, LOOP_SET_STATUS, &info), "SET_OFFSET");
}

LoopAttachment::~LoopAttachment() {
    if (isBound_) (void)::ioctl(device_, LOOP_CLR_FD, 0);
}
