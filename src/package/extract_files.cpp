#include "package/extract_files.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "apply/change_journal.h"
#include "console/reporter.h"
#include "package/bytes.h"
#include "package/file_record.h"
#include "package/inflate_stream.h"
#include "package/part_reader.h"

namespace {

std::string relativePath(const InstalledPackage& package, std::string_view name) {
    std::string path;
    if (package.disabled) path += "/x/" + package.name;
    if (!name.starts_with('/')) path += '/';
    return path.append(name);
}

enum class CopyResult { Done, SourceEnded, WriteFailed };

CopyResult copyData(InflateStream& records, StagedFile& file, std::uint32_t length) {
    std::array<char, 16384> piece;
    while (length != 0) {
        const auto wanted = std::min<std::uint32_t>(length, piece.size());
        const auto size = static_cast<std::streamsize>(wanted);
        if (!records.read(piece.data(), size)) return CopyResult::SourceEnded;
        if (!file.write(piece.data(), size)) return CopyResult::WriteFailed;
        length -= wanted;
    }
    file.close();
    return file ? CopyResult::Done : CopyResult::WriteFailed;
}

/// The extraction of one part.
class Extraction {
public:
    Extraction(InstalledPackage& package, ChangeJournal& journal, PartReader& reader, Reporter& reporter)
        : package_(package), journal_(journal), reader_(reader), reporter_(reporter), records_(*reader.rdbuf()) {}

    bool run() {
        while (const auto head = readRecordHead(records_))
            if (!takeRecord(*head)) return false;
        return true;
    }

private:
    bool takeRecord(const RecordHead& head) {
        name_.resize(head.nameLength);
        if (!records_.read(name_.data(), head.nameLength)) {
            reporter_.reportBrokenPackage(package_);
            return false;
        }
        if (head.isWritten) return stageRecord(head);
        records_.seekg(head.dataLength, std::ios_base::cur);
        return true;
    }

    bool stageRecord(const RecordHead& head) {
        const std::string name(untilNul(name_));
        if (!isUsableRecordName(name)) {
            reporter_.reportBrokenPackage(package_);
            return false;
        }
        const std::string target = "/flash" + relativePath(package_, name);
        StagedFile file = journal_.stageFile(target, head.dataLength, head.mode);
        if (!file.isOpen()) {
            reporter_.reportFileFailure(package_, name);
            return false;
        }
        package_.files.insert(target);
        switch (copyData(records_, file, head.dataLength)) {
            case CopyResult::SourceEnded: reporter_.reportBrokenPackage(package_); return false;
            case CopyResult::WriteFailed: reporter_.reportFileFailure(package_, name); return false;
            case CopyResult::Done: break;
        }
        reporter_.showProgress(package_, reader_);
        return true;
    }

    InstalledPackage& package_;
    ChangeJournal& journal_;
    PartReader& reader_;
    Reporter& reporter_;
    InflateStream records_;
    std::string name_;  // of the record at hand, as it comes
};

}  // namespace

bool extractFiles(InstalledPackage& package, ChangeJournal& journal, PartReader& reader, Reporter& reporter) {
    return Extraction(package, journal, reader, reporter).run();
}
