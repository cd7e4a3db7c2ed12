#include "kvpack/package_files.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <vector>

#include <sys/stat.h>

#include "kvpack/file_records.h"
#include "kvpack/package_json.h"
#include "kvpack/package_parts.h"
#include "kvpack/printable.h"
#include "package/package_header.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t KEPT_MODE_BITS = 0777;

using FileVisitor = std::function<Failure(const FileRecord& file, FileRecords& records)>;

/// Visits the records of the file part that the reader stands on. `folder` goes in front of the names.
Failure visitPart(PartReader& reader, const std::string& folder, const FileVisitor& visit) {
    FileRecords records(reader);
    while (auto record = records.next()) {
        if (!record->isWritten) continue;
        record->name = folder + record->name.substr(record->name.find_first_not_of('/'));
        if (auto failure = visit(*record, records)) return failure;
    }
    return records.fault();
}

Failure visitParts(PackageParts& file, const FileVisitor& visit) {
    PartReader& reader = file.reader();
    if (!isPackageMagic(reader.magic())) return "is no package";
    bool isBundle = false;
    std::string folder;
    while (file.nextPart()) {
        const PartId id = reader.partId();
        isBundle |= id == PART_BUNDLE_HEADER;
        if (id == PART_PACKAGE_HEADER && isBundle) {
            PackageInfo member("");
            if (!readHeaderRecord(member, reader) || !member.hasUsableName()) return "has a member without a name";
            folder = member.name + '/';
        }
        if (id == PART_FILES)
            if (auto failure = visitPart(reader, folder, visit)) return failure;
    }
    return file.cutOff() ? Failure("is cut off") : std::nullopt;
}

/// Visits every file of a package in order.
Failure visitFiles(const std::string& path, const FileVisitor& visit) {
    PackageParts file(path);
    if (auto failure = file.openFailure()) return failure;
    if (auto failure = visitParts(file, visit)) return path + ": " + *failure;
    return std::nullopt;
}

Failure writeFile(const fs::path& path, const FileRecord& record, FileRecords& records) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    std::ofstream file(path, std::ios::binary);
    std::array<char, 65536> piece;
    std::uint64_t written = 0;
    while (const std::size_t got = records.readData(piece)) {
        file.write(piece.data(), static_cast<std::streamsize>(got));
        written += got;
    }
    file.close();
    if (!file || ::chmod(path.c_str(), record.mode & KEPT_MODE_BITS) != 0)
        return "cannot write " + printable(path.string()) + ": " + std::strerror(errno);
    return written == record.size ? std::nullopt : records.fault();
}

}  // namespace

Failure listPackageFiles(const std::string& path, Form form, std::ostream& out) {
    std::vector<FileRecord> files;
    auto failure = visitFiles(path, [&](const FileRecord& record, FileRecords&) -> Failure {
        if (form == Form::Json)
            files.push_back(record);
        else
            out << std::oct << std::setw(6) << (record.mode & 07777U) << std::dec << std::setw(11) << record.size
                << "  " << printable(record.name) << '\n';
        return std::nullopt;
    });
    if (form == Form::Json && !failure) out << filesJson(files);
    return failure;
}

Failure extractPackageFiles(const std::string& path, const std::string& directory) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(directory, error)))
        return directory + " is there already: expected a directory to make";
    const fs::path temporary = directory + ".part";
    if (!fs::create_directory(temporary, error))
        return "cannot make the directory " + temporary.string() + ": " +
               (error ? error.message() : "it is there already");
    auto failure = visitFiles(path, [&](const FileRecord& record, FileRecords& records) {
        return writeFile(temporary / record.name, record, records);
    });
    if (!failure) {
        fs::rename(temporary, directory, error);
        if (error) failure = "cannot make the directory " + directory + ": " + error.message();
    }
    if (failure) fs::remove_all(temporary, error);
    return failure;
}
