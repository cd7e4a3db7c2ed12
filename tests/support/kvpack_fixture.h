#pragma once

#include <string>

#include <gtest/gtest.h>

#include "support/device_root.h"

/// What a run of kvpack gave.
struct KvpackResult {
    int code;
    std::string out, err;
};

/// Runs kvpack with blank-separated arguments, of which '' is an empty one.
KvpackResult kvpack(const std::string& line);

/// Builds the package of this name, version 7.2, as "/out/<name>.kvp".
KvpackResult build(const std::string& name, const std::string& more = "");

/// Joins package files into the bundle "/out/suite.kvp".
KvpackResult bundled(const std::string& members);

/// A device root with the development keys in "/keys" and an empty "/out".
struct KvpackTest : testing::Test {
    KvpackTest();

    DeviceRoot device;
};
