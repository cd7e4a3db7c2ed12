#include "kvpack/file_tree.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sys/stat.h>

#include "kvpack/files_part.h"

namespace {

namespace fs = std::filesystem;

Failure listFiles(const fs::path& directory, std::vector<std::string>& names) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto type = entry->symlink_status(error).type();
        if (error || type == fs::file_type::directory) continue;
        if (type != fs::file_type::regular)
            return "cannot pack " + entry->path().string() + ": expected a regular file or a directory";
        names.push_back(entry->path().lexically_relative(directory).string());
    }
    if (error) return "cannot read the tree " + directory.string() + ": " + error.message();
    std::ranges::sort(names);
    return std::nullopt;
}

Failure copyFile(FilesPart& files, const std::string& path, std::uint64_t length) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, 65536> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() != 0) {
        const auto got = static_cast<std::size_t>(file.gcount());
        if (got > length) break;
        files.write({piece.data(), got});
        length -= got;
    }
    if (!file.eof() || length != 0) return "cannot read " + path + ", or it changed its size meanwhile";
    return std::nullopt;
}

}  // namespace

Failure writeFileTree(PackageWriter& writer, const std::string& directory) {
    std::vector<std::string> names;
    if (auto failure = listFiles(directory, names)) return failure;
    FilesPart files(writer);
    for (const std::string& name : names) {
        const std::string path = (fs::path(directory) / name).string();
        struct stat status;
        if (::stat(path.c_str(), &status) != 0) return "cannot read " + path + ": " + std::strerror(errno);
        const auto length = static_cast<std::uint64_t>(status.st_size);
        if (length > 0xFFFFFFFF) return "cannot pack " + path + ": expected less than 4 GiB";
        files.write(recordHead(name, status.st_mode, static_cast<std::uint32_t>(length)));
        if (auto failure = copyFile(files, path, length)) return failure;
    }
    files.finish();
    return std::nullopt;
}
