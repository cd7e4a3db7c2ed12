#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/unique_fd.h"

struct seccomp_data;
struct seccomp_notif;

/// A system call that changes files.
struct FileCall {
    std::string name;    ///< of the system call
    std::string path;    ///< what it changes; of a rename or a link, where it leads to
    std::string source;  ///< of a rename, where it comes from
};

enum class Fault {
    None,
    Fail,   ///< the call fails, in turns with ENOSPC and with EIO
    Short,  ///< a write of two bytes or more writes half of them; any other call goes through
    Kill,   ///< the process is killed in front of the call
};

/// Stands beside programs that run, counts the calls with which they change files, and disturbs one of them.
/// The kernel itself stops the program at each call and asks, so that none is missed, whatever code it comes
/// from. Calls of its children are let through uncounted, and so is output to standard output and error.
/// sync(), which changes nothing but would wait for all disks of the machine, is answered and not carried out.
class FaultInjector {
public:
    /// `at`: number of the call to disturb, the first one being 0, in all programs together.
    explicit FaultInjector(std::size_t at = 0, Fault fault = Fault::None) : at_(at), fault_(fault) {}

    /// Forks a process that calls `body`, which is to turn into the program and not to return.
    pid_t fork(const std::function<void()>& body);

    /// Watches over that process until it ends. It is left to be waited for.
    void attend(pid_t child);

    const std::vector<FileCall>& calls() const { return calls_; }  ///< the disturbed one among them
    bool hasKilled() const { return fault_ == Fault::Kill && calls_.size() > at_; }

private:
    void answer(pid_t child, const seccomp_notif& question);
    ssize_t writeHalf(pid_t child, const seccomp_data& data) const;

    std::size_t at_;
    Fault fault_;
    UniqueFd process_;   // the program
    UniqueFd listener_;  // through which the kernel asks
    std::vector<FileCall> calls_;
};
