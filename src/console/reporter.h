#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "database/installed_package.h"

class PartReader;

/// The one channel through which a person hears what the program does: permanent lines on standard output,
/// and below them one status line that changes in place. Permanent lines are also kept, for the log on
/// flash. No operation fails: what becomes of a write on standard output is not looked at.
///
/// The text of a permanent line is cut to 255 bytes; its prefix does not count.
class Reporter {
public:
    /// Clears the status line and prints a plain line.
    [[gnu::format(printf, 2, 3)]] void info(const char* format, ...);

    /// Prints a line with the prefix "WARNING: " above the status line, which stays.
    [[gnu::format(printf, 2, 3)]] void warning(const char* format, ...);

    /// Clears the status line and prints a line with the prefix "ERROR: ".
    [[gnu::format(printf, 2, 3)]] void error(const char* format, ...);

    /// Replaces the status line; an empty text clears it.
    void setStatus(const std::string& text);

    /// Makes the status line a progress bar: how much of the package the reader has passed.
    void showProgress(const InstalledPackage& package, PartReader& reader);

    /// Reports a failed write of a file of the package as an error. `errno` tells what failed.
    void reportFileFailure(const InstalledPackage& package, const std::string& path);

    /// Reports as an error that the contents of the package fail a check.
    void reportBrokenPackage(const InstalledPackage& package);

    /// Every permanent line of this run, with its prefix and without a line end, in the order of printing;
    /// the log adds the lines of earlier runs.
    std::vector<std::string> messages;

    bool quiet = false;  ///< nothing is printed and nothing is kept

private:
    void printLine(std::string_view prefix, std::string_view text);

    std::string status_;  // what stands on the status line; empty if there is none
};

/// The way install progress and failures call a package: a member of a bundle by its bundle.
std::string progressName(const InstalledPackage& package);
