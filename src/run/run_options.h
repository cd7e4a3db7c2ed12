#pragma once

#include <string>

#include "planning/install_flags.h"

/// What the command line leaves behind.
struct RunOptions {
    bool quiet = false;
    bool fromStdin = false;   ///< install one package from standard input
    bool showTable = false;   ///< print the package table and end
    bool commitAtEnd = true;  ///< end of a scheduled run: commit, or leave the manifest for a later commit
    InstallFlags installFlags = 0;
    std::string root;  ///< new root directory; empty for none
};
