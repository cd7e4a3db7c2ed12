#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "faults/fault_trial.h"

namespace {

// Of two scenarios, the first call of each kind in front of the commit and in it. scripts/faults tries them all.
TEST(Faults, LeaveTheOldOrTheNew) {
    for (const Scenario& scenario : faultScenarios()) {
        if (!scenario.name.ends_with("download directory") && !scenario.name.ends_with("image package")) continue;
        FaultTrial trial(scenario);
        std::set<std::string> tried;
        for (std::size_t point = 0; point < trial.calls().size(); ++point) {
            const FileCall& call = trial.calls()[point];
            const std::string file = std::filesystem::path(call.path).filename();
            const std::string kind = call.name + ' ' + (file.starts_with("tmp") ? "tmp" : file);
            if (!tried.insert(kind + (point < trial.commitBegin() ? "" : " in the commit")).second) continue;
            for (const Fault fault : faultsAt(call)) EXPECT_EQ(trial.attempt(point, fault), "");
        }
        EXPECT_GT(tried.size(), 5U);
    }
}

}  // namespace
