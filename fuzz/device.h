#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The device that a fuzz target works on, made once for each process, before the first input: "/flash" and "/ram" on
/// two file systems of 1 MiB, "/rw" and a few files beside them. Nothing of the machine is in it but the folder that
/// findings go to, if `-artifact_prefix` gives that as an absolute path.
///
/// A target that needs no device links it all the same, for require().

/// Empties the device and lives in it, by chroot, from construction to destruction.
class DeviceVisit {
public:
    DeviceVisit();
    DeviceVisit(const DeviceVisit&) = delete;
    DeviceVisit& operator=(const DeviceVisit&) = delete;
    ~DeviceVisit();
};

/// Ends the process as a finding unless the condition holds; the stack trace tells which. It goes back to the machine
/// first, where the symbols are.
void require(bool holds);

/// All that stands in the device, by path: its mode, and the content of a file or a link.
using DeviceState = std::map<std::string, std::string>;
DeviceState deviceState();

/// The part of a state that is neither below "/flash" nor below "/ram".
DeviceState besideFlashAndRam(DeviceState state);

/// Writes a file with its parent directories. A path where no file can be is left alone.
void writeFile(const std::string& path, std::string_view content);

/// Writes the files of a text in which each begins with a line "==> <path>". A path without a slash in front is one
/// below `directory`.
void writeFiles(std::string_view text, const std::string& directory);

/// Runs the installer, without its process, on a command line and a standard input. Returns its exit code.
int runInstaller(std::vector<std::string> arguments, std::string_view input = {});

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
