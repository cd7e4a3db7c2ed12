#include "kvpack/show_package.h"

#include <array>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <vector>

#include "kvpack/package_json.h"
#include "kvpack/package_parts.h"
#include "kvpack/part_contents.h"
#include "kvpack/printable.h"

namespace {

constexpr std::size_t SHOWN_TEXT_SIZE = 200;

std::string magicText(std::uint32_t magic) {
    std::ostringstream text;
    text << std::hex << std::setw(8) << std::setfill('0') << magic;
    return text.str();
}

std::string timeText(std::uint32_t seconds) {
    const std::time_t time = seconds;
    std::tm date{};
    std::array<char, 64> text;
    ::gmtime_r(&time, &date);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &date)};
}

void printHeader(const PackageInfo& package, std::ostream& out) {
    out << "  " << printable(nameVersion(package)) << ", built " << timeText(package.buildTime);
    if ((package.flags & PKG_FLAG_BOOT) != 0) out << ", boot";
    if ((package.flags & PKG_FLAG_NO_METADATA) != 0) out << ", no-metadata";
    if ((package.flags & PKG_FLAG_DISCARD) != 0) out << ", discard";
}

void printEntry(const PackageDependency& entry, std::ostream& out) {
    out << "\n            " << printable(entry.name);
    if (entry.minVersion != 0) out << " from " << versionText(entry.minVersion);
    if (entry.maxVersion != 0) out << " to " << versionText(entry.maxVersion);
    if (entry.priority != 0) out << " priority " << entry.priority;
}

void printRecord(const FileRecord& record, std::ostream& out) {
    out << "\n            " << std::oct << std::setw(6) << record.mode << std::dec << std::setw(11) << record.size
        << "  " << printable(record.name);
}

void printVerdict(const SignatureVerdict& verdict, std::ostream& out) {
    out << (verdict.ed25519Holds ? "  holds" : verdict.kcdsaHolds ? "  holds by EC-KCDSA alone" : "  does not hold");
}

void printContents(const PartContents& contents, std::ostream& out) {
    if (contents.header) printHeader(*contents.header, out);
    if (contents.text) out << "  " << printable(contents.text->substr(0, SHOWN_TEXT_SIZE));
    if (contents.entries)
        for (const PackageDependency& entry : *contents.entries) printEntry(entry, out);
    if (contents.files)
        for (const FileRecord& record : *contents.files) printRecord(record, out);
    if (contents.signature) printVerdict(*contents.signature, out);
    if (contents.fault) out << "\n            " << *contents.fault;
}

void showAsText(PackageParts& file, std::ostream& out) {
    const PartReader& reader = file.reader();
    out << "magic " << magicText(reader.magic());
    if (reader.magic() == UNRECORDED_MAGIC) out << " (leaves no record)";
    if (!isPackageMagic(reader.magic())) out << " (no package: an install refuses it)";
    out << ", " << reader.packageLength() << " bytes by the file header\n"
        << "    offset  id  part                  size\n";
    while (file.nextPart()) {
        const PartContents part = readPart(file.reader(), trustedKeys());
        out << std::setw(10) << part.offset << std::setw(4) << part.id << "  " << std::left << std::setw(16)
            << partName(part.id) << std::right << std::setw(10) << part.size;
        printContents(part, out);
        out << '\n';
    }
    if (file.cutOff()) out << "the file ends inside a part\n";
}

void showAsJson(PackageParts& file, std::ostream& out) {
    std::vector<PartContents> parts;
    while (file.nextPart()) parts.push_back(readPart(file.reader(), trustedKeys()));
    const PartReader& reader = file.reader();
    out << packageJson(magicText(reader.magic()), reader.packageLength(), parts, !file.cutOff());
}

}  // namespace

Failure showPackage(const std::string& path, Form form, std::ostream& out) {
    PackageParts file(path);
    if (auto failure = file.openFailure()) return failure;
    if (form == Form::Json)
        showAsJson(file, out);
    else
        showAsText(file, out);
    return std::nullopt;
}
