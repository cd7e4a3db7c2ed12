// Disturbs every scenario at every point, and tells how many there were and what did not hold.

#include <iomanip>
#include <iostream>
#include <map>

#include "faults/fault_trial.h"

int main() {
    std::cout
        << "calls: those that change files; before: of these in front of the commit; failed, short, killed: points\n"
           "tried; gone on: failed calls that lost a marker, a state file or a mode; left old: kills in the commit\n"
           "that the next run did not make up for\n\n"
        << std::left << std::setw(52) << "scenario" << std::right;
    for (const char* column : {"calls", "before", "failed", "short", "killed", "gone on", "left old"})
        std::cout << std::setw(9) << column;
    std::cout << '\n';

    std::size_t attempts = 0;
    std::string violations;
    for (const Scenario& scenario : faultScenarios()) {
        FaultTrial trial(scenario);
        std::map<Fault, std::size_t> tried;
        for (std::size_t point = 0; point < trial.calls().size(); ++point)
            for (const Fault fault : faultsAt(trial.calls()[point])) {
                violations += trial.attempt(point, fault);
                ++tried[fault];
                ++attempts;
            }
        std::cout << std::left << std::setw(52) << scenario.name << std::right;
        for (const std::size_t number : {trial.calls().size(), trial.commitBegin(), tried[Fault::Fail],
                                         tried[Fault::Short], tried[Fault::Kill], trial.goneOn(), trial.leftOld()})
            std::cout << std::setw(9) << number;
        std::cout << std::endl;
    }
    std::cout << '\n'
              << violations << attempts << " points tried, " << (violations.empty() ? "all held" : "NOT all held")
              << '\n';
    return violations.empty() ? 0 : 1;
}
