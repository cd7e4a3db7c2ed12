#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/package_builder.h"

class FaultInjector;

using Lines = std::vector<std::string>;

/// What stands below a directory, by path below it: a file with its content, a symbolic link with "-> " and
/// its text, and an empty directory with a slash behind its path and no content.
using Tree = std::map<std::string, std::string>;

/// What a run of the program gave.
struct Outcome {
    int code = -1;        ///< exit code; -1 if a signal ended it
    std::string out;      ///< standard output, byte for byte
    std::string err;      ///< standard error
    Lines lines() const;  ///< the permanent lines on the console, without what the status line showed
};

/// An empty device of its own for one test: "/flash" and "/ram" on two file systems, "/rw" and "/tmp"
/// beside them, and "/bin/vorn", which appends its arguments to "/rw/vorn-calls". The test lives in it by chroot from
/// construction to destruction, and so do the programs that it starts. Gone with the object.
class DeviceRoot {
public:
    /// Sizes in KiB of the two file systems.
    explicit DeviceRoot(unsigned flashSize = 65536, unsigned ramSize = 65536);
    DeviceRoot(const DeviceRoot&) = delete;
    DeviceRoot& operator=(const DeviceRoot&) = delete;
    ~DeviceRoot();

    /// Runs the installer with the arguments, and with the bytes on a pipe as its standard input; with an
    /// injector under its watch.
    Outcome run(Lines arguments, std::string_view input = {}, FaultInjector* injector = nullptr) const;

    /// Runs any program of the machine or the device; the first argument is its path.
    Outcome execute(Lines arguments, std::string_view input = {}, FaultInjector* injector = nullptr) const;

    /// run({"-"}) on a package, which has to go through.
    void install(const PackageBuilder& package) const;

    /// Environment of the runs to come.
    std::map<std::string, std::string> environment;

    /// Writes a file with its parent directories.
    void write(const std::string& path, std::string_view content) const;

    /// The content of a file; "(none)" if there is no such file.
    std::string read(const std::string& path) const;

    /// The permission bits of a file.
    unsigned mode(const std::string& path) const;

    Tree tree(const std::string& directory) const;

    /// The same with the mode and the inode of each file: what a file that was written again differs in.
    Tree exactTree(const std::string& directory) const;

private:
    std::string path_;  // of the device's root on the machine
};
