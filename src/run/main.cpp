#include <csignal>
#include <cstdlib>
#include <span>
#include <string_view>

#include "run/command_line.h"
#include "run/start_up.h"

namespace {

bool isExcludedBoard() {
    const char* board = std::getenv("board");
    return board != nullptr && std::string_view(board) == "qemu_p9";
}

}  // namespace

int main(int argc, char* argv[]) {
    if (isExcludedBoard()) return 0;
    // A reader of the console that goes away must not end the process in the middle of a commit.
    (void)std::signal(SIGPIPE, SIG_IGN);
    RunOptions options;
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = readCommandLine(arguments.subspan(arguments.empty() ? 0 : 1), options)) return *code;
    return runStartUp(options);
}
