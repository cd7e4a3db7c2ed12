#pragma once

#include <string>

#include "platform/unique_fd.h"

/// A free loop device of the Linux loop driver, open for reading. On failure the object is empty, and the
/// system's reason stands on standard error.
UniqueFd openFreeLoopDevice(std::string& path);

/// A file attached to a loop device, read-only, from an offset on. Detached with the object.
class LoopAttachment {
public:
    /// device, file: descriptors, which have to outlive this. offset: in bytes. name: what the driver shows,
    /// cut to 64 bytes. On failure isAttached() is false, and the reason stands on standard error.
    LoopAttachment(const UniqueFd& device, const UniqueFd& file, int offset, const std::string& name);
    LoopAttachment(const LoopAttachment&) = delete;
    LoopAttachment& operator=(const LoopAttachment&) = delete;
    ~LoopAttachment();

    /// Whether the device shows the file from the offset on.
    bool isAttached() const { return isReady_; }

private:
    int device_;
    bool isBound_;
    bool isReady_;
};
