#pragma once

#include <gtest/gtest.h>

#include "support/device_root.h"

/// A device on real disks: "/flash" and "/flash/boot" are ext4 file systems of 4 MiB on loop devices, "/ram" is a
/// tmpfs. A machine that does not allow that skips the test and says why; where NO_SKIPPED_TESTS is set in the
/// environment, as in CI, the test fails there.
struct RealDiskTest : testing::Test {
    void SetUp() override;

    /// Leaves exactly so many blocks free on a file system.
    void leaveFree(const std::string& path, unsigned long blocks) const;

    DeviceRoot device;
};
