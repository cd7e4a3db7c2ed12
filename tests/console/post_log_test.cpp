#include "console/post_log.h"

#include <gtest/gtest.h>

#include "database/package_db.h"
#include "support/device_root.h"

namespace {

// The process remembers a take-over, so this is the one test that makes one.
TEST(PostLog, AddsTheLinesOfTheRunToEarlierOnes) {
    const DeviceRoot device;
    PackageDb db;
    flushPostLog(db);
    EXPECT_EQ(device.read("/flash/postlog"), "(none)");
    db.messages = {"first", "second"};
    flushPostLog(db);
    flushPostLog(db);
    EXPECT_EQ(device.read("/flash/postlog"), "first\nsecond\nfirst\nsecond\n");

    device.write("/flash/postlog", "earlier\n\nlast without an end");
    db.messages = {"before"};
    takeOverPostLog(db);
    EXPECT_EQ(device.read("/flash/postlog"), std::string(4096, '\0'));
    db.messages.emplace_back("after");
    flushPostLog(db);
    EXPECT_EQ(device.read("/flash/postlog"), "before\nearlier\n\nafter\n");

    // A run that died leaves its zeros, which are no line.
    device.write("/flash/postlog", std::string(4096, '\0'));
    db.messages.clear();
    takeOverPostLog(db);
    flushPostLog(db);
    EXPECT_EQ(device.read("/flash/postlog"), "");
}

}  // namespace
