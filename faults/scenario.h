#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "support/device_root.h"

/// What a device is asked to do, for runs that are disturbed on the way.
struct Scenario {
    std::string name;

    /// Puts onto an empty device all that the request needs.
    std::function<void(DeviceRoot&)> prepare;

    std::vector<Lines> commands = {Lines{}};  ///< arguments of the installer, for one run behind the other
    std::string input = {};                   ///< standard input of each

    /// The targets whose new contents lie on another file system until the commit.
    std::set<std::string> copied = {};

    unsigned flashSize = 65536;  ///< KiB
};

std::vector<Scenario> faultScenarios();
