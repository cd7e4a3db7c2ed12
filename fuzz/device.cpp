#include "device.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "database/package_db.h"
#include "platform/file_source.h"
#include "platform/unique_fd.h"
#include "run/command_line.h"
#include "run/start_up.h"
#include "support/host.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* FILE_SYSTEMS[] = {"/flash", "/ram", "/"};

const std::string devicePath = DEVICE_FOLDER;  // on the machine; each process mounts a device of its own there
UniqueFd workingDirectory;                     // of the process on the machine
bool isInside = false;

void demand(bool done, const std::string& what) {
    if (done) return;
    std::fprintf(stderr, "%s: %s\n", what.c_str(), std::strerror(errno));
    std::exit(EXIT_FAILURE);
}

void mountTmpfs(const std::string& path) {
    fs::create_directories(path);
    demand(::mount("tmpfs", path.c_str(), "tmpfs", 0, "mode=755,size=1024k") == 0, "mount");
}

/// Shows the folder of the findings in the device: some are written before the process is back on the machine.
void showFindings(std::span<char*> arguments) {
    constexpr std::string_view option = "-artifact_prefix=/";
    for (const std::string_view argument : arguments) {
        if (!argument.starts_with(option)) continue;
        const std::string folder = fs::path(argument.substr(option.size() - 1)).parent_path();
        const std::string shown = devicePath + folder;
        fs::create_directories(shown);
        demand(::mount(folder.c_str(), shown.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "bind");
    }
}

void makeDevice(std::span<char*> arguments) {
    (void)hostRoot();
    mountTmpfs(devicePath);
    mountTmpfs(devicePath + "/flash");
    mountTmpfs(devicePath + "/ram");
    showFindings(arguments);
    workingDirectory = UniqueFd(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const UniqueFd input(::memfd_create("input", 0));
    demand(::dup2(input.get(), STDIN_FILENO) == STDIN_FILENO, "input");
}

void goBack() {
    if (!isInside) return;
    isInside = false;
    (void)!::fchdir(hostRoot());
    (void)!::chroot(".");
    (void)!::fchdir(workingDirectory.get());
}

struct Entry {
    std::string path;
    struct stat status;
};

/// All below a directory, as far as it lies on the same file system. What a directory holds comes ahead of it.
void collect(const std::string& directory, dev_t device, std::vector<Entry>& entries) {
    std::error_code none;
    for (const auto& found : fs::directory_iterator(directory, none)) {
        Entry entry = {.path = found.path().string(), .status = {}};
        if (::lstat(entry.path.c_str(), &entry.status) != 0 || entry.status.st_dev != device) continue;
        if (S_ISDIR(entry.status.st_mode)) collect(entry.path, device, entries);
        entries.push_back(std::move(entry));
    }
}

std::vector<Entry> allEntries() {
    std::vector<Entry> entries;
    for (const char* root : FILE_SYSTEMS) {
        struct stat status;
        demand(::stat(root, &status) == 0, root);
        collect(root, status.st_dev, entries);
    }
    return entries;
}

std::string contentOf(const Entry& entry) {
    if (S_ISLNK(entry.status.st_mode)) return fs::read_symlink(entry.path).string();
    if (!S_ISREG(entry.status.st_mode)) return {};
    FileSource file(entry.path);
    return {std::istreambuf_iterator<char>(&file), {}};
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(readability-non-const-parameter)
int LLVMFuzzerInitialize(int* count, char*** arguments) {
    makeDevice({*arguments, static_cast<std::size_t>(*count)});
    return 0;
}

// The sanitizers call these ahead of a report.
void __asan_on_error() { goBack(); }
void __ubsan_on_report() { goBack(); }

/// In place of the system's: the log is synced in each run, and that would wait for every disk of the machine.
void sync() noexcept {}

}  // extern "C"

DeviceVisit::DeviceVisit() {
    demand(::chroot(devicePath.c_str()) == 0 && ::chdir("/") == 0, "chroot");
    isInside = true;
    for (const Entry& entry : allEntries()) (void)std::remove(entry.path.c_str());
    fs::create_directories("/flash/var/pdb");
    for (const char* path : {"/etc/passwd", "/rw/store", "/tmp/file", "/file"}) writeFile(path, "not to be touched");
}

DeviceVisit::~DeviceVisit() { goBack(); }

void require(bool holds) {
    if (holds) return;
    goBack();
    std::abort();
}

DeviceState deviceState() {
    DeviceState state;
    for (const Entry& entry : allEntries())
        state[entry.path] = std::to_string(entry.status.st_mode) + ' ' + contentOf(entry);
    return state;
}

DeviceState besideFlashAndRam(DeviceState state) {
    std::erase_if(state, [](const auto& entry) {
        return entry.first.starts_with("/flash/") || entry.first.starts_with("/ram/");
    });
    return state;
}

void writeFile(const std::string& path, std::string_view content) {
    std::error_code failure;
    fs::create_directories(fs::path(path).parent_path(), failure);
    if (!failure) std::ofstream(path, std::ios::binary) << content;
}

void writeFiles(std::string_view text, const std::string& directory) {
    constexpr std::string_view head = "==> ";
    while (true) {
        const auto start = text.find(head);
        if (start == std::string_view::npos) return;
        text.remove_prefix(start + head.size());
        const std::string_view file = text.substr(0, text.find(head));
        const std::string_view name = file.substr(0, file.find('\n'));
        const std::string_view content = file.substr(std::min(file.size(), name.size() + 1));
        const std::string path(name.substr(0, name.find('\0')));
        writeFile(path.starts_with('/') ? path : directory + path, content);
        text.remove_prefix(file.size());
    }
}

int runInstaller(std::vector<std::string> arguments, std::string_view input) {
    demand(::ftruncate(STDIN_FILENO, 0) == 0 && ::lseek(STDIN_FILENO, 0, SEEK_SET) == 0 &&
               ::pwrite(STDIN_FILENO, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()),
           "input");
    std::vector<char*> words;
    words.reserve(arguments.size());
    for (std::string& argument : arguments) words.push_back(argument.data());
    PackageDb::instance() = PackageDb();
    RunOptions options;
    const auto code = readCommandLine(words, options);
    return code ? *code : runStartUp(options);
}
