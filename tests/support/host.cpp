#include "support/host.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "platform/file_source.h"

namespace {

[[noreturn]] void giveUp(const char* what) {
    std::fprintf(stderr, "%s: %s\nThe tests need root, or user namespaces for everybody.\n", what,
                 std::strerror(errno));
    std::exit(EXIT_FAILURE);
}

void mapRoot(const char* file, unsigned id) { std::ofstream(file) << "0 " << id << " 1"; }

/// Lets this process make mounts of its own: gives it a private mount namespace, and a user namespace if it
/// does not run as root.
void enterPrivateNamespace() {
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (::unshare(CLONE_NEWNS | (uid == 0 ? 0 : CLONE_NEWUSER)) != 0) giveUp("unshare");
    if (uid != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        mapRoot("/proc/self/uid_map", uid);
        mapRoot("/proc/self/gid_map", gid);
    }
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) giveUp("mount");
}

}  // namespace

int hostRoot() {
    // Opened in the new namespace: no mount can be made below a root of the old one.
    static const int root = (enterPrivateNamespace(), ::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    return root;
}

std::string hostFile(const std::string& path) {
    FileSource file(UniqueFd{::openat(hostRoot(), path.substr(1).c_str(), O_RDONLY | O_CLOEXEC)});
    return {std::istreambuf_iterator<char>(&file), {}};
}
