#include "run/child_process.h"

#include <cerrno>
#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

int runAndWait(const char* path, const char* arg0, const char* arg1) {
    const pid_t child = ::fork();
    if (child < 0) return -1;
    if (child == 0) {
        (void)std::signal(SIGPIPE, SIG_DFL);  // which this program ignores for itself only
        (void)!::chdir("/");
        ::execl(path, arg0, arg1, static_cast<const char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return status;
}
