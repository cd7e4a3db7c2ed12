#pragma once

#include <string>

/// The machine that the tests run on, which stays in reach after a test has entered a device root.

/// Lets this process make mounts of its own: gives it a private mount namespace, and a user namespace if it
/// does not run as root. Ends the process with a message where the machine does not allow that.
void enterPrivateNamespace();

/// A descriptor of the machine's root directory.
int hostRoot();

/// The content of a file of the machine.
std::string hostFile(const std::string& path);
