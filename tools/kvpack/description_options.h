#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "package/package_info.h"

/// The options that describe a package or a bundle. What is refused throws CLI::ValidationError, as the argument
/// library has it, with a text that names the value and what was expected.

/// Adds what packages and bundles share. The values go to `info`, `image` and `output`, which outlive the command.
void addDescriptionOptions(CLI::App& command, PackageInfo& info, std::string& image, std::string& output);

/// Adds an option, to be given as often as wanted, that takes NAME[:LOWEST[:HIGHEST[:PRIORITY]]]. An empty field
/// leaves that side open.
void addEntryOption(CLI::App& command, const std::string& option, std::vector<PackageDependency>& entries,
                    const std::string& help);
