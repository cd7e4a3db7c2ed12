#include "faults/fault_injector.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Where a call names the file that it changes: the number of the argument, which is a path or a descriptor.
struct WatchedCall {
    int number;
    const char* name;
    std::size_t file;
    bool isDescriptor = false;
    std::optional<std::size_t> source = std::nullopt;  // argument with the old path of a rename
};

#define PATH(call, ...) \
    WatchedCall { SYS_##call, #call, __VA_ARGS__ }
#define DESCRIPTOR(call, file) \
    WatchedCall { SYS_##call, #call, file, true }

constexpr WatchedCall WATCHED_CALLS[] = {
// Newer machines have only the calls that start out from a directory.
#ifdef SYS_open
    PATH(open, 0),
    PATH(creat, 0),
    PATH(rename, 1, false, 0),
    PATH(link, 1),
    PATH(symlink, 1),
    PATH(unlink, 0),
    PATH(mkdir, 0),
    PATH(rmdir, 0),
    PATH(mknod, 0),
    PATH(chmod, 0),
    PATH(chown, 0),
    PATH(lchown, 0),
    PATH(utimes, 0),
    PATH(futimesat, 1),
#endif
#ifdef SYS_utime
    PATH(utime, 0),
#endif
#ifdef SYS_renameat
    PATH(renameat, 3, false, 1),
#endif
    PATH(openat, 1),
    PATH(openat2, 1),
    PATH(renameat2, 3, false, 1),
    PATH(linkat, 3),
    PATH(symlinkat, 2),
    PATH(unlinkat, 1),
    PATH(mkdirat, 1),
    PATH(mknodat, 1),
    PATH(fchmodat, 1),
    PATH(fchownat, 1),
    PATH(utimensat, 1),
    PATH(truncate, 0),
    PATH(setxattr, 0),
    PATH(lsetxattr, 0),
    PATH(removexattr, 0),
    PATH(lremovexattr, 0),
    DESCRIPTOR(write, 0),
    DESCRIPTOR(pwrite64, 0),
    DESCRIPTOR(writev, 0),
    DESCRIPTOR(pwritev, 0),
    DESCRIPTOR(pwritev2, 0),
    DESCRIPTOR(sendfile, 0),
    DESCRIPTOR(copy_file_range, 2),
    DESCRIPTOR(splice, 2),
    DESCRIPTOR(fchmod, 0),
    DESCRIPTOR(fchown, 0),
    DESCRIPTOR(ftruncate, 0),
    DESCRIPTOR(fallocate, 0),
    DESCRIPTOR(fsetxattr, 0),
    DESCRIPTOR(fremovexattr, 0),
    DESCRIPTOR(fsync, 0),
    DESCRIPTOR(fdatasync, 0)};

#undef PATH
#undef DESCRIPTOR

void require(bool ok, const char* what) {
    if (!ok) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

/// The number that the listener has in the child: above those in use.
constexpr int LISTENER = 500;

/// A program for the kernel that asks about each watched call and lets all others through.
std::vector<sock_filter> watchingFilter() {
    std::vector<sock_filter> filter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    const auto ask = [&filter](int number) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(number), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    };
    for (const WatchedCall& call : WATCHED_CALLS) ask(call.number);
    ask(SYS_sync);
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter;
}

/// A descriptor of another process, for this one as well.
UniqueFd descriptorOf(const UniqueFd& process, std::uint64_t number) {
    UniqueFd copy(static_cast<int>(::syscall(SYS_pidfd_getfd, process.get(), number, 0)));
    require(static_cast<bool>(copy), "pidfd_getfd");
    return copy;
}

/// Up to `length` bytes of another process, as far as they are mapped in one piece.
std::string memoryOf(pid_t process, std::uint64_t address, std::size_t length) {
    std::string bytes(length, '\0');
    iovec local = {.iov_base = bytes.data(), .iov_len = length};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the address is one of the other process
    iovec remote = {.iov_base = reinterpret_cast<void*>(address), .iov_len = length};
    const ssize_t got = ::process_vm_readv(process, &local, 1, &remote, 1, 0);
    bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return bytes;
}

std::string pathIn(pid_t process, std::uint64_t address) {
    constexpr std::size_t PAGE = 4096;  // a read stops at the first page that is not there
    std::string text = memoryOf(process, address, PAGE - address % PAGE);
    if (text.find('\0') == std::string::npos) text += memoryOf(process, address + text.size(), PAGE);
    return text.substr(0, text.find('\0'));
}

/// The call as one that changes a file; nothing if it changes none.
std::optional<FileCall> fileCall(pid_t process, const seccomp_data& data) {
    const auto* call = std::ranges::find(WATCHED_CALLS, data.nr, &WatchedCall::number);
    if (call == std::end(WATCHED_CALLS)) return std::nullopt;
    const std::uint64_t file = data.args[call->file];
    if (call->isDescriptor) {
        if (file <= STDERR_FILENO) return std::nullopt;
        const std::string link = "/proc/" + std::to_string(process) + "/fd/" + std::to_string(file);
        std::string path = std::filesystem::read_symlink(link);
        if (!path.starts_with('/')) return std::nullopt;  // a pipe
        return FileCall{.name = call->name, .path = std::move(path), .source = ""};
    }
    const std::string_view name = call->name;
    if (name == "open" || name == "openat") {
        const std::uint64_t flags = data.args[call->file + 1];
        if ((flags & (O_ACCMODE | O_CREAT | O_TRUNC)) == 0) return std::nullopt;
    }
    return FileCall{.name = call->name,
                    .path = pathIn(process, file),
                    .source = call->source ? pathIn(process, data.args[*call->source]) : ""};
}

}  // namespace

pid_t FaultInjector::fork(const std::function<void()>& body) {
    std::vector<sock_filter> filter = watchingFilter();
    const sock_fprog program = {.len = static_cast<unsigned short>(filter.size()), .filter = filter.data()};
    const pid_t child = ::fork();
    if (child == 0) {
        (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);  // or it would stay stopped if nobody came for the listener
        const long listener =
            ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
        (void)::dup3(static_cast<int>(listener), LISTENER, O_CLOEXEC);
        (void)::raise(SIGSTOP);  // the next watched call may come at once, and needs somebody to answer
        body();
        std::_Exit(127);
    }
    require(child > 0 && ::waitpid(child, nullptr, WUNTRACED) == child, "fork");
    process_ = UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    listener_ = descriptorOf(process_, LISTENER);
    (void)::kill(child, SIGCONT);
    return child;
}

void FaultInjector::attend(pid_t child) {
    pollfd listener = {.fd = listener_.get(), .events = POLLIN, .revents = 0};
    while (::poll(&listener, 1, -1) > 0 && (listener.revents & POLLIN) != 0) {
        seccomp_notif question{};
        if (::ioctl(listener_.get(), SECCOMP_IOCTL_NOTIF_RECV, &question) == 0) answer(child, question);
    }
    listener_ = UniqueFd();
}

/// Carries out half of a write in the place of the other process. Returns the number of bytes.
ssize_t FaultInjector::writeHalf(pid_t child, const seccomp_data& data) const {
    const UniqueFd file = descriptorOf(process_, data.args[0]);
    const std::string half = memoryOf(child, data.args[1], static_cast<std::size_t>(data.args[2] / 2));
    return ::write(file.get(), half.data(), half.size());
}

void FaultInjector::answer(pid_t child, const seccomp_notif& question) {
    seccomp_notif_resp response{.id = question.id, .val = 0, .error = 0, .flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE};
    const auto process = static_cast<pid_t>(question.pid);
    auto call = process == child ? fileCall(process, question.data) : std::nullopt;
    if (question.data.nr == SYS_sync) response.flags = 0;
    if (call) {
        calls_.push_back(*std::move(call));
        const bool isDisturbed = calls_.size() == at_ + 1;
        if (isDisturbed && fault_ == Fault::Kill) {
            (void)::kill(process, SIGKILL);
            return;
        }
        if (isDisturbed && fault_ == Fault::Fail) {
            response.flags = 0;
            response.error = at_ % 2 == 0 ? -ENOSPC : -EIO;
        }
        if (isDisturbed && fault_ == Fault::Short && question.data.nr == SYS_write && question.data.args[2] > 1) {
            response.flags = 0;
            response.val = writeHalf(process, question.data);
        }
    }
    require(::ioctl(listener_.get(), SECCOMP_IOCTL_NOTIF_SEND, &response) == 0, "answer");
}
