#include "support/device_root.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "faults/fault_injector.h"
#include "platform/file_source.h"
#include "support/host.h"

namespace {

namespace fs = std::filesystem;

void require(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error(what + ": " + std::strerror(errno));
}

void mountTmpfs(const std::string& path, unsigned size) {
    fs::create_directories(path);
    const std::string options = "mode=755,size=" + std::to_string(size) + "k";
    require(::mount("tmpfs", path.c_str(), "tmpfs", 0, options.c_str()) == 0, "mount " + path);
}

/// Shows a directory of the machine in the device, so that programs find their libraries.
void showHostDirectory(const std::string& root, const std::string& path) {
    if (fs::is_symlink(path)) {
        fs::copy_symlink(path, root + path);
    } else if (fs::exists(path)) {
        fs::create_directories(root + path);
        require(::mount(path.c_str(), (root + path).c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "bind " + path);
    }
}

/// A file without a name, for what a program writes.
UniqueFd scratchFile() {
    UniqueFd file(::memfd_create("output", MFD_CLOEXEC));
    require(static_cast<bool>(file), "memfd_create");
    return file;
}

std::string contentOf(UniqueFd file) {
    require(::lseek(file.get(), 0, SEEK_SET) == 0, "lseek");
    FileSource source(std::move(file));
    return {std::istreambuf_iterator<char>(&source), {}};
}

/// The reading end of a pipe that another process fills with the text, until nobody reads any more.
UniqueFd pipeOf(std::string_view text) {
    std::array<int, 2> ends;
    require(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe");
    UniqueFd reading(ends[0]);
    const UniqueFd writing(ends[1]);
    if (::fork() != 0) return reading;
    reading = UniqueFd();
    for (ssize_t put = 1; put > 0 && !text.empty(); text.remove_prefix(put > 0 ? static_cast<std::size_t>(put) : 0))
        put = ::write(writing.get(), text.data(), text.size());
    std::_Exit(0);
}

int waitFor(pid_t child) {
    int status = 0;
    require(::waitpid(child, &status, 0) == child, "waitpid");
    while (::waitpid(-1, nullptr, 0) > 0) continue;  // who filled the pipe
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// One line of the console as it stands in the end: what follows the last return to its first column.
std::string standing(std::string line) {
    for (const std::string_view cursor : {"\x1B[?25l", "\x1B[?25h"})
        for (auto at = line.find(cursor); at != std::string::npos; at = line.find(cursor))
            line.erase(at, cursor.size());
    const auto start = line.rfind('\r');
    return start == std::string::npos ? line : line.substr(start + 1);
}

}  // namespace

Lines Outcome::lines() const {
    Lines lines;
    std::string_view rest = out;
    for (auto end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        lines.push_back(standing(std::string(rest.substr(0, end))));
        rest.remove_prefix(end + 1);
    }
    return lines;
}

DeviceRoot::DeviceRoot(unsigned flashSize, unsigned ramSize) {
    (void)hostRoot();
    (void)developmentKeys();  // while their files are in reach
    std::string path = "/tmp/device-XXXXXX";
    require(::mkdtemp(path.data()) != nullptr, "mkdtemp");
    path_ = path;
    mountTmpfs(path_, 65536);
    for (const char* shown : {"/usr", "/lib", "/lib64", "/proc", "/dev"}) showHostDirectory(path_, shown);
    // Where programs that count what is reached in them leave their counts (scripts/coverage).
    if (const char* counts = std::getenv("COVERAGE_FOLDER")) showHostDirectory(path_, counts);
    mountTmpfs(path_ + "/flash", flashSize);
    mountTmpfs(path_ + "/ram", ramSize);
    for (const char* directory : {"/flash/var/pdb", "/rw", "/tmp", "/bin"}) fs::create_directories(path_ + directory);
    fs::copy_file(INSTALLER_PROGRAM, path_ + "/installer");
    fs::copy_file(VORN_PROGRAM, path_ + "/bin/vorn");
    require(::chroot(path_.c_str()) == 0 && ::chdir("/") == 0, "chroot");
}

DeviceRoot::~DeviceRoot() {
    (void)!::fchdir(hostRoot());
    (void)!::chroot(".");
    (void)::umount2(path_.c_str(), MNT_DETACH);
    (void)::rmdir(path_.c_str());
}

Outcome DeviceRoot::run(Lines arguments, std::string_view input, FaultInjector* injector) const {
    arguments.insert(arguments.begin(), "/installer");
    return execute(std::move(arguments), input, injector);
}

Outcome DeviceRoot::execute(Lines arguments, std::string_view input, FaultInjector* injector) const {
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    UniqueFd in = pipeOf(input);
    UniqueFd out = scratchFile();
    UniqueFd err = scratchFile();
    const auto becomeProgram = [&] {
        for (const auto& [name, value] : environment) (void)::setenv(name.c_str(), value.c_str(), 1);
        (void)::dup2(in.get(), STDIN_FILENO);
        (void)::dup2(out.get(), STDOUT_FILENO);
        (void)::dup2(err.get(), STDERR_FILENO);
        ::execv(argv.front(), argv.data());
        std::_Exit(127);
    };
    const pid_t child = injector != nullptr ? injector->fork(becomeProgram) : ::fork();
    if (child == 0) becomeProgram();
    in = UniqueFd();  // or who fills the pipe would wait for this process to read it
    if (injector != nullptr) injector->attend(child);
    const int code = waitFor(child);
    return {.code = code, .out = contentOf(std::move(out)), .err = contentOf(std::move(err))};
}

void DeviceRoot::install(const PackageBuilder& package) const {
    const Outcome result = run({"-"}, package.bytes());
    ASSERT_EQ(result.code, 0) << result.out << result.err;
}

void DeviceRoot::write(const std::string& path, std::string_view content) const {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string DeviceRoot::read(const std::string& path) const {
    UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file ? contentOf(std::move(file)) : "(none)";
}

unsigned DeviceRoot::mode(const std::string& path) const {
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
}

Tree DeviceRoot::tree(const std::string& directory) const {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        const std::string name = entry.path().lexically_relative(directory).string();
        if (entry.is_symlink())
            tree[name] = "-> " + fs::read_symlink(entry.path()).string();
        else if (!entry.is_directory())
            tree[name] = read(entry.path().string());
        else if (fs::is_empty(entry.path()))
            tree[name + '/'] = "";
    }
    return tree;
}

Tree DeviceRoot::exactTree(const std::string& directory) const {
    Tree exact;
    for (const auto& [name, content] : tree(directory)) {
        struct stat status {};
        (void)::lstat((fs::path(directory) / name).c_str(), &status);
        std::ostringstream text;
        text << status.st_mode << ' ' << status.st_ino << ' ' << content;
        exact[name] = text.str();
    }
    return exact;
}
