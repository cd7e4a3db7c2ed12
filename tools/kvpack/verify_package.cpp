#include "kvpack/verify_package.h"

#include <iomanip>
#include <iostream>

#include "kvpack/package_json.h"
#include "kvpack/package_parts.h"
#include "kvpack/part_contents.h"
#include "kvpack/part_order.h"
#include "kvpack/printable.h"
#include "kvpack/verify_findings.h"
#include "package/package_signature.h"

namespace {

/// One pass through a file.
class Verification {
public:
    Verification(PackageParts& file, const PublicKeys& keys) : file_(file), keys_(keys), coverage_(file.size()) {}

    Findings run() {
        checkFileHeader();
        while (file_.nextPart()) checkPart();
        const auto cut = file_.cutOff();
        if (cut) note(*cut, "the file ends inside a part or its header");
        if (auto missing = order_.finish()) note(cut.value_or(file_.size()), *missing);
        findings_.ranges = coverage_.finish(file_.size());
        return std::move(findings_);
    }

private:
    /// Parts are checked in the order of the file, so the first fault to be noted is the first of the file.
    void note(std::uint64_t offset, std::string what) {
        if (!findings_.fault) findings_.fault = {.offset = offset, .what = std::move(what)};
    }

    void checkFileHeader() {
        const PartReader& reader = file_.reader();
        if (file_.size() < FILE_HEADER_SIZE) return;
        if (!isPackageMagic(reader.magic())) note(0, "the magic is none of a package");
        if (reader.packageLength() != file_.size())
            note(4, "the file header tells of " + std::to_string(reader.packageLength()) + " bytes, and the file has " +
                        std::to_string(file_.size()));
    }

    void checkPart() {
        PartReader& reader = file_.reader();
        const std::uint64_t start = file_.partStart();
        const std::uint64_t end = std::min(file_.partEnd(), file_.size());
        if (auto misplaced = order_.take(reader.partId(), reader.partSize())) note(start, *misplaced);
        if (file_.partEnd() > file_.size()) {
            coverage_.takePart(reader.partId(), start, end);
            return;
        }
        const PartContents contents = readPart(reader, keys_);
        if (contents.fault) note(start + PART_HEADER_SIZE, *contents.fault);
        if (contents.header) takeHeader(*contents.header, start + PART_HEADER_SIZE);
        if (contents.signature) {
            const int level = signatureLevel(package_);
            checkVerdict(*contents.signature, level, start + PART_HEADER_SIZE);
            coverage_.takeSignature(*contents.signature, level, start, end);
        } else {
            coverage_.takePart(reader.partId(), start, end);
        }
    }

    void takeHeader(const PackageInfo& header, std::uint64_t offset) {
        package_ = header;
        if (file_.reader().partId() == PART_BUNDLE_HEADER)
            bundleName_ = header.name;
        else if (header.name == bundleName_)
            note(offset, "the member has the name of the bundle");
    }

    void checkVerdict(const SignatureVerdict& verdict, int level, std::uint64_t offset) {
        if (!verdict.isWhole)
            note(offset, "the signature is shorter than " + std::to_string(SHORT_SIGNATURE_SIZE) + " bytes");
        else if (!verdict.holds(level))
            note(offset, verdict.kcdsaHolds ? "the signature holds by EC-KCDSA alone, and this version demands Ed25519"
                                            : "the signature does not hold");
        findings_.signatures.push_back({.offset = offset, .package = nameVersion(package_), .verdict = verdict});
    }

    PackageParts& file_;
    const PublicKeys& keys_;
    PartOrder order_;
    SignatureCoverage coverage_;
    PackageInfo package_{""};  // the one that the current part belongs to
    std::string bundleName_;   // empty outside of a bundle
    Findings findings_;
};

const char* verdictText(const SignatureVerdict& verdict) {
    if (verdict.ed25519Holds) return "the signature holds by Ed25519";
    if (verdict.kcdsaHolds) return "the signature holds by EC-KCDSA alone";
    return "the signature does not hold";
}

void printText(const Findings& findings, std::ostream& out) {
    out << "    offset       bytes  coverage     what\n";
    for (const ByteRange& range : findings.ranges)
        out << std::setw(10) << range.offset << std::setw(12) << range.size << "  " << std::left << std::setw(13)
            << coverageText(range.coverage) << std::right << range.what << '\n';
    for (const auto& [offset, package, verdict] : findings.signatures)
        out << printable(package) << ": " << verdictText(verdict) << ", over a "
            << (verdict.usesSha256 ? "SHA-256" : "SHA-1") << " digest\n";
}

}  // namespace

Failure verifyPackage(const std::string& path, const PublicKeys& keys, Form form, std::ostream& out) {
    PackageParts file(path);
    if (auto failure = file.openFailure()) return failure;
    const Findings findings = Verification(file, keys).run();
    if (form == Form::Json)
        out << findingsJson(findings);
    else
        printText(findings, out);
    if (!findings.fault) return std::nullopt;
    return path + ": byte " + std::to_string(findings.fault->offset) + ": " + findings.fault->what;
}
