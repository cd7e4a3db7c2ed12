#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "faults/fault_injector.h"
#include "faults/scenario.h"

/// What can be tried at a call.
std::vector<Fault> faultsAt(const FileCall& call);

/// A scenario on a device of its own, to be carried out with one call after the other disturbed. What stands
/// under "/flash" is compared with modes, but without the log, which tells of each run.
class FaultTrial {
public:
    /// Makes the device ready, and carries the scenario out undisturbed to learn the calls and the outcome.
    explicit FaultTrial(Scenario scenario);

    /// The calls that can be disturbed.
    const std::vector<FileCall>& calls() const { return calls_; }

    /// Number of the call that begins the commit: the first one that changes anything live under "/flash".
    std::size_t commitBegin() const { return commitBegin_; }

    /// Carries the scenario out with the call disturbed, and then once more undisturbed. Returns what should
    /// have held and did not, empty if all did:
    ///
    /// - A short write makes no difference.
    /// - A failed call in front of the commit: the run tells of an error and nothing is changed. The next run
    ///   ends as if nothing had happened. But see goneOn(), and a manifest that cannot be written is not told of.
    /// - A failed call in the commit: nothing differs but its own target, which is as it was.
    /// - No failed call leaves a temporary file, unless it is the one to rename or remove that file, or to write
    ///   the manifest.
    /// - A kill in front of the commit: nothing is changed but for temporary files. The next run ends as if
    ///   nothing had happened.
    /// - A kill in the commit: each file is wholly old or wholly new, unless it is one of those to be copied.
    ///   The next run ends as if nothing had happened. But see leftOld().
    std::string attempt(std::size_t point, Fault fault);

    /// How many of the failed calls in front of the commit lost a marker, a state file or the mode of a file. Those
    /// are staged without looking whether that works, so that the run goes on without them; nothing else may differ.
    std::size_t goneOn() const { return goneOn_; }

    /// How many of the kills in the commit the next run did not make up for. From where a package's record is
    /// new the package counts as installed, so that the files which the commit had still to reach stay as they are.
    std::size_t leftOld() const { return leftOld_; }

private:
    /// What a disturbed run leaves, and what the next run makes of it.
    struct Aftermath {
        Tree flash;
        std::set<std::string> temporaryFiles;
        bool hasToldError;
        Tree nextFlash;
        std::set<std::string> nextTemporaryFiles;
    };

    void restore() const;
    bool carryOut(FaultInjector& injector) const;
    bool isOldOrNew(const Tree& flash, const std::string& name) const;
    bool isToBeReached(const std::string& name, std::size_t point) const;
    std::string checkError(std::size_t point, const FileCall& call, const std::set<std::string>& targets,
                           const Aftermath& aftermath);
    std::string checkKill(std::size_t point, const Aftermath& aftermath);
    std::string checkTemporaryFiles(const FaultInjector& injector, const FileCall& call, bool isKill,
                                    const Aftermath& aftermath) const;

    Scenario scenario_;
    DeviceRoot device_;
    std::vector<FileCall> calls_;
    std::size_t commitBegin_ = 0;
    std::size_t goneOn_ = 0;
    std::size_t leftOld_ = 0;
    Tree before_;
    Tree reference_;  // after the undisturbed run
};
