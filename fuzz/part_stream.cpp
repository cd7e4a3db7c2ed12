#include <algorithm>
#include <array>
#include <sstream>

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>

#include "device.h"
#include "package/package_header.h"
#include "package/package_signature.h"
#include "package/part_reader.h"
#include "platform/file_source.h"

/// One package, passed twice: by a reader that seeks, and by one that hashes and copies. What they are asked is told
/// by the first bytes of the input, and the rest is the package. Both have to answer alike.

namespace {

constexpr std::size_t STEP_BYTES = 24;

/// What the installer asks for in its modes, and everything.
std::vector<PartId> wantList(unsigned choice) {
    switch (choice) {
        case 0:
            return {PART_PACKAGE_HEADER, PART_BUNDLE_HEADER, PART_BUNDLE_MEMBERS, PART_ARCHITECTURE, PART_DEPENDENCIES,
                    PART_PROVIDES,       PART_CONFLICTS,     PART_IMAGE,          PART_FILES,        PART_SIGNATURE};
        case 1:
            return {PART_BUNDLE_HEADER, PART_PACKAGE_HEADER, PART_TEXT24,   PART_NOTE,
                    PART_DEPENDENCIES,  PART_PROVIDES,       PART_CONFLICTS};
        case 2: return {PART_IMAGE, PART_SIGNATURE};
        default: break;
    }
    std::vector<PartId> all;
    for (PartId id = 0; id <= 32; ++id) all.push_back(id);
    return all;
}

void describe(std::ostream& out, const std::vector<PackageDependency>& list) {
    for (const auto& entry : list)
        out << entry.name << ' ' << entry.minVersion << ' ' << entry.maxVersion << ' ' << entry.priority << '\n';
}

void describe(std::ostream& out, const PackageInfo& package) {
    out << package.name << ' ' << package.version << ' ' << package.buildTime << ' ' << package.flags << ' '
        << package.text24 << ' ' << package.arch << ' ' << package.text2 << ' ' << package.note << ' '
        << package.hasImage << ' ' << package.isBundle << '\n';
    for (const auto* list : {&package.dependencies, &package.provides, &package.conflicts}) describe(out, *list);
}

/// One passage through a package.
class Passage {
public:
    Passage(const std::uint8_t* steps, std::size_t stepBytes, int file, std::string_view package, bool hashing)
        : steps_(steps, stepBytes),
          package_(package),
          source_(UniqueFd(::dup(file))),
          reader_(source_, hashing, hashing ? &copy_ : nullptr) {}

    /// What the reader answered.
    std::string run() {
        reader_.want(wantList(steps_.ConsumeIntegralInRange(0U, 3U)));
        reader_.nextPart();
        while (reader_.partId() != PART_END) takePart();
        require(package_.starts_with(copy_.str()));
        return log_.str();
    }

private:
    void takePart() {
        log_ << reader_.partId() << ' ' << reader_.partOffset() << ' ' << reader_.partSize() << '\n';
        if (reader_.partId() == PART_PACKAGE_HEADER || reader_.partId() == PART_BUNDLE_HEADER) {
            PackageInfo info("");
            const bool isParsed = parsePackageHeader(info, reader_);
            log_ << isParsed << ' ' << reader_.good() << '\n';
            describe(log_, info);
            if (isParsed) return;  // the reader has moved on
        } else if (reader_.partId() == PART_SIGNATURE) {
            (void)checkPackageSignature(reader_, 1);  // which takes nothing from a reader that does not hash
        } else {
            while (steps_.ConsumeBool()) takeStep();
        }
        if (steps_.ConsumeBool()) reader_.clear();
        reader_.nextPart();
    }

    void takeStep() {
        const std::streamoff position = reader_.tellg();
        log_ << position << ' ' << reader_.partLeft() << ' ' << reader_.rdstate() << '\n';
        const auto length = steps_.ConsumeIntegralInRange<std::uint32_t>(0, 5000);
        switch (steps_.ConsumeIntegralInRange(0, 3)) {
            case 0: log_ << reader_.peek() << '\n'; break;
            case 1: log_ << reader_.get() << '\n'; break;
            case 2: read(length, position); break;
            default: seek(length); break;
        }
    }

    void read(std::size_t length, std::streamoff position) {
        std::string bytes(length, '\0');
        reader_.read(bytes.data(), static_cast<std::streamsize>(length));
        bytes.resize(static_cast<std::size_t>(reader_.gcount()));
        if (bytes.empty()) return;
        require(package_.substr(reader_.partOffset() + static_cast<std::size_t>(position)).starts_with(bytes));
        log_ << bytes.size() << '\n';
    }

    /// Forwards, and not behind the end of the file: there only one that seeks can go.
    void seek(std::uint32_t length) {
        const auto passed = reader_.partSize() - reader_.partLeft();
        const std::size_t left =
            package_.size() - std::min<std::size_t>(package_.size(), reader_.partOffset() + passed);
        reader_.seekg(static_cast<std::streamoff>(std::min<std::size_t>(length, left)), std::ios::cur);
    }

    FuzzedDataProvider steps_;
    std::string_view package_;
    FileSource source_;
    std::stringbuf copy_;
    PartReader reader_;
    std::ostringstream log_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const UniqueFd file(::memfd_create("package", MFD_CLOEXEC));
    const std::size_t stepBytes = std::min(size, STEP_BYTES);
    const std::string_view package = asText(data + stepBytes, size - stepBytes);
    require(::ftruncate(file.get(), 0) == 0 &&
            ::pwrite(file.get(), package.data(), package.size(), 0) == static_cast<ssize_t>(package.size()));
    std::array<std::string, 2> answers;
    for (const bool hashing : {false, true}) {
        (void)::lseek(file.get(), 0, SEEK_SET);
        answers[hashing ? 1 : 0] = Passage(data, stepBytes, file.get(), package, hashing).run();
    }
    require(answers[0] == answers[1]);
    return 0;
}
