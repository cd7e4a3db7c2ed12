#include "support/device_root.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
        require(::mount(path.c_str(), (root + path).c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0,
                "bind " + path);
    }
}

struct Pipe {
    UniqueFd reading;
    UniqueFd writing;

    Pipe() {
        std::array<int, 2> ends;
        require(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe");
        reading = UniqueFd(ends[0]);
        writing = UniqueFd(ends[1]);
    }
};

void closeEnd(UniqueFd& end) { end = UniqueFd(); }

/// Reads what has come. False at the end.
bool readSome(const UniqueFd& end, std::string& text) {
    std::array<char, 65536> piece;
    const ssize_t got = ::read(end.get(), piece.data(), piece.size());
    if (got > 0) text.append(piece.data(), static_cast<std::size_t>(got));
    return got > 0;
}

/// Writes what goes into the pipe. False when all is written, or nobody reads any more.
bool writeSome(const UniqueFd& end, std::string_view& text) {
    const ssize_t put = ::write(end.get(), text.data(), text.size());
    if (put > 0) text.remove_prefix(static_cast<std::size_t>(put));
    return put > 0 && !text.empty();
}

void exchange(Pipe& in, std::string_view input, Pipe& out, std::string& output, Pipe& err,
              std::string& errors) {
    require(::fcntl(in.writing.get(), F_SETFL, O_NONBLOCK) == 0, "fcntl");
    if (input.empty()) closeEnd(in.writing);
    while (out.reading || err.reading) {
        std::array<pollfd, 3> events = {pollfd{out.reading.get(), POLLIN, 0},
                                        pollfd{err.reading.get(), POLLIN, 0},
                                        pollfd{in.writing.get(), POLLOUT, 0}};
        require(::poll(events.data(), events.size(), -1) > 0, "poll");
        if (events[0].revents != 0 && !readSome(out.reading, output)) closeEnd(out.reading);
        if (events[1].revents != 0 && !readSome(err.reading, errors)) closeEnd(err.reading);
        if (events[2].revents != 0 && !writeSome(in.writing, input)) closeEnd(in.writing);
    }
}

[[noreturn]] void execute(Lines arguments, const std::map<std::string, std::string>& environment,
                          const Pipe& in, const Pipe& out, const Pipe& err) {
    (void)::dup2(in.reading.get(), STDIN_FILENO);
    (void)::dup2(out.writing.get(), STDOUT_FILENO);
    (void)::dup2(err.writing.get(), STDERR_FILENO);
    for (const auto& [name, value] : environment) (void)::setenv(name.c_str(), value.c_str(), 1);
    arguments.insert(arguments.begin(), "installer");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::execv("/installer", argv.data());
    std::_Exit(127);
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
    for (const char* shown : {"/usr", "/lib", "/lib64", "/proc"}) showHostDirectory(path_, shown);
    mountTmpfs(path_ + "/flash", flashSize);
    mountTmpfs(path_ + "/ram", ramSize);
    for (const char* directory : {"/flash/var/pdb", "/rw", "/tmp", "/bin", "/dev"})
        fs::create_directories(path_ + directory);
    fs::copy_file(INSTALLER_PROGRAM, path_ + "/installer");
    require(::chroot(path_.c_str()) == 0 && ::chdir("/") == 0, "chroot");
}

DeviceRoot::~DeviceRoot() {
    (void)!::fchdir(hostRoot());
    (void)!::chroot(".");
    (void)::umount2(path_.c_str(), MNT_DETACH);
    (void)::rmdir(path_.c_str());
}

Outcome DeviceRoot::run(const Lines& arguments, std::string_view input) const {
    Pipe in;
    Pipe out;
    Pipe err;
    const pid_t child = ::fork();
    require(child >= 0, "fork");
    if (child == 0) execute(arguments, environment, in, out, err);
    for (UniqueFd* end : {&in.reading, &out.writing, &err.writing}) closeEnd(*end);
    Outcome run;
    exchange(in, input, out, run.out, err, run.err);
    int status = 0;
    require(::waitpid(child, &status, 0) == child, "waitpid");
    if (WIFEXITED(status)) run.code = WEXITSTATUS(status);
    return run;
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
    FileSource file(path);
    if (!file.isOpen()) return "(none)";
    std::string content;
    for (int c = file.sbumpc(); c != EOF; c = file.sbumpc()) content.push_back(static_cast<char>(c));
    return content;
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
