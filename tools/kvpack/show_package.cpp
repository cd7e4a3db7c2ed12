#include "kvpack/show_package.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <vector>

#include "kvpack/every_part.h"
#include "package/bytes.h"
#include "package/file_record.h"
#include "package/inflate_stream.h"
#include "package/package_header.h"
#include "package/package_signature.h"
#include "platform/file_source.h"

namespace {

constexpr std::size_t SHOWN_TEXT_SIZE = 200;

const char* partName(PartId id) {
    switch (id) {
        case PART_PACKAGE_HEADER: return "package header";
        case PART_TEXT2: return "text 2";
        case PART_DEPENDENCIES: return "dependencies";
        case PART_FILES: return "files";
        case PART_SIGNATURE: return "signature";
        case PART_ARCHITECTURE: return "architecture";
        case PART_CONFLICTS: return "conflicts";
        case PART_BUNDLE_HEADER: return "bundle header";
        case PART_PROVIDES: return "provides";
        case PART_BUNDLE_MEMBERS: return "disabled members";
        case PART_IMAGE: return "image";
        case PART_NOTE: return "note";
        case PART_TEXT24: return "text 24";
        case PART_SHA256_MARKER: return "SHA-256 marker";
        default: return "unknown";
    }
}

/// Text from a package as one safe line: what is no printable ASCII character shows as a dot.
std::string printable(std::string text) {
    for (char& c : text)
        if (c < ' ' || c > '~') c = '.';
    return text;
}

std::string timeText(std::uint32_t seconds) {
    const std::time_t time = seconds;
    std::tm date{};
    std::array<char, 64> text;
    ::gmtime_r(&time, &date);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &date)};
}

std::string rangeText(const PackageDependency& entry) {
    std::string text;
    if (entry.minVersion != 0) text += " from " + versionText(entry.minVersion);
    if (entry.maxVersion != 0) text += " to " + versionText(entry.maxVersion);
    if (entry.priority != 0) text += " priority " + std::to_string(entry.priority);
    return text;
}

/// For each signature of a package file in order: whether it holds at the level.
std::vector<bool> signatureVerdicts(const std::string& path, int level) {
    FileSource file(path);
    PartReader reader(file, true, nullptr);
    reader.clear();  // whatever the magic, the signature does not cover it
    reader.want({PART_SIGNATURE});
    std::vector<bool> verdicts;
    while (reader.nextPart() != PART_END) verdicts.push_back(checkPackageSignature(reader, level));
    return verdicts;
}

/// One run of showPackage().
class Listing {
public:
    Listing(const std::string& path, std::ostream& out)
        : file_(path),
          reader_(file_, false, nullptr),
          fileSize_(std::filesystem::file_size(path)),
          out_(out),
          byEither_(signatureVerdicts(path, 1)),
          byEd25519_(signatureVerdicts(path, 2)) {}

    void print() {
        printFileHeader();
        reader_.clear();
        wantEveryPart(reader_);
        while (reader_.nextPart() != PART_END) printPart();
        if (reader_.partOffset() != fileSize_) out_ << "the file ends inside a part\n";
    }

private:
    void printFileHeader() {
        out_ << "magic " << std::hex << std::setw(8) << std::setfill('0') << reader_.magic() << std::dec
             << std::setfill(' ');
        if (reader_.magic() == UNRECORDED_MAGIC) out_ << " (leaves no record)";
        if (reader_.bad()) out_ << " (no package: an install refuses it)";
        out_ << ", " << reader_.packageLength() << " bytes by the file header\n"
             << "    offset  id  part                  size\n";
    }

    void printPart() {
        const PartId id = reader_.partId();
        out_ << std::setw(10) << reader_.partOffset() << std::setw(4) << id << "  " << std::left << std::setw(16)
             << partName(id) << std::right << std::setw(10) << reader_.partSize();
        switch (id) {
            case PART_PACKAGE_HEADER:
            case PART_BUNDLE_HEADER: printHeader(); break;
            case PART_ARCHITECTURE:
            case PART_NOTE:
            case PART_TEXT2:
            case PART_TEXT24: out_ << "  " << printable(readPiece(reader_).substr(0, SHOWN_TEXT_SIZE)); break;
            case PART_DEPENDENCIES:
            case PART_PROVIDES:
            case PART_CONFLICTS:
            case PART_BUNDLE_MEMBERS: printList(); break;
            case PART_FILES: printFiles(); break;
            case PART_SIGNATURE: printVerdict(); break;
            default: break;
        }
        out_ << '\n';
    }

    void printHeader() {
        PackageInfo package("");
        if (!readHeaderRecord(package, reader_)) {
            out_ << "  cut off";
            return;
        }
        out_ << "  " << printable(nameVersion(package)) << ", built " << timeText(package.buildTime);
        if ((package.flags & PKG_FLAG_BOOT) != 0) out_ << ", boot";
        if ((package.flags & PKG_FLAG_NO_METADATA) != 0) out_ << ", no-metadata";
        if ((package.flags & PKG_FLAG_DISCARD) != 0) out_ << ", discard";
    }

    void printList() {
        std::vector<PackageDependency> entries;
        if (!readDependencyList(reader_, entries)) out_ << "  cut off";
        for (const PackageDependency& entry : entries)
            out_ << "\n            " << printable(entry.name) << rangeText(entry);
    }

    void printFiles() {
        InflateStream records(*reader_.rdbuf());
        std::array<std::byte, RECORD_HEAD_SIZE> head;
        while (readExactly(records, head)) {
            const std::span bytes(head);
            const auto length = loadU32(bytes.subspan<RECORD_DATA_LENGTH_OFFSET, 4>());
            std::string name(loadU16(bytes.subspan<RECORD_NAME_LENGTH_OFFSET, 2>()), '\0');
            records.read(name.data(), static_cast<std::streamsize>(name.size()));
            out_ << "\n            " << std::oct << std::setw(6) << loadU16(bytes.first<2>()) << std::dec
                 << std::setw(11) << length << "  " << printable(name);
            records.seekg(length, std::ios_base::cur);
        }
    }

    void printVerdict() {
        const std::size_t index = signatures_++;
        const auto holds = [index](const std::vector<bool>& verdicts) {
            return index < verdicts.size() && verdicts[index];
        };
        out_ << (holds(byEd25519_) ? "  holds" : holds(byEither_) ? "  holds by EC-KCDSA alone" : "  does not hold");
    }

    FileSource file_;
    PartReader reader_;
    std::uintmax_t fileSize_;
    std::ostream& out_;
    std::vector<bool> byEither_;
    std::vector<bool> byEd25519_;
    std::size_t signatures_ = 0;  // printed so far
};

}  // namespace

Failure showPackage(const std::string& path, std::ostream& out) {
    if (!FileSource(path).isOpen()) return "cannot read " + path;
    Listing(path, out).print();
    return std::nullopt;
}
