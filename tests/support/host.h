#pragma once

#include <string>

/// The machine that the tests run on, which stays in reach after a test has entered a device root.

/// A descriptor of the machine's root directory. With the first call this process goes into a mount
/// namespace of its own, in which it may mount what it likes. Ends the process with a message where the
/// machine does not allow that.
int hostRoot();

/// The content of a file of the machine.
std::string hostFile(const std::string& path);
