#include "run/command_line.h"

#include <iostream>
#include <string_view>

#include "run/journal_modes.h"

namespace {

bool isIgnored(std::string_view argument) {
    return argument == "-b" || argument == "--force" || argument == "--noupgrade" || argument == "-i";
}

}  // namespace

std::optional<int> readCommandLine(std::span<char* const> arguments, RunOptions& options) {
    while (!arguments.empty()) {
        const std::string_view argument = arguments.front();
        arguments = arguments.subspan(1);
        if (argument == "--safe") {
            options.commitAtEnd = false;
        } else if (argument == "-r" && !arguments.empty()) {
            options.root = arguments.front();
            arguments = arguments.subspan(1);
        } else if (argument == "-") {
            options.fromStdin = true;
            break;
        } else if (argument == "-q") {
            options.quiet = true;
        } else if (argument == "-down") {
            options.installFlags |= allowDowngrade;
        } else if (argument == "--reinstall") {
            std::cout << "\nResuming upgrade...\n" << std::flush;
            options.installFlags |= allowSameVersion;
        } else if (argument == "--commit") {
            runCommitMode();
            return 0;
        } else if (argument == "--cancel") {
            runCancelMode();
            return 0;
        } else if (argument == "--show") {
            options.showTable = true;
        } else if (!isIgnored(argument)) {
            std::cout << "usage: installer [-q] [-r <root>] [-]\n" << std::flush;
            return 0;
        }
    }
    return std::nullopt;
}
