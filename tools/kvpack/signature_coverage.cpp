#include "kvpack/signature_coverage.h"

#include <algorithm>

#include "kvpack/part_contents.h"
#include "package/package_signature.h"

const char* coverageText(Coverage coverage) {
    switch (coverage) {
        case Coverage::Signed: return "signed";
        case Coverage::Signature: return "signature";
        case Coverage::None: break;
    }
    return "not covered";
}

SignatureCoverage::SignatureCoverage(std::uint64_t fileSize) {
    add(std::min<std::uint64_t>(fileSize, FILE_HEADER_SIZE), "file header", Coverage::None);
}

void SignatureCoverage::takePart(PartId id, std::uint64_t start, std::uint64_t end) {
    const bool switchesHash = id == PART_SHA256_MARKER && !usesSha256_;
    usesSha256_ |= switchesHash;
    if (id == PART_PACKAGE_HEADER || switchesHash) digestStart_ = start;
    hasHeader_ |= id == PART_PACKAGE_HEADER;
    add(end, partName(id), Coverage::None);
}

void SignatureCoverage::takeSignature(const SignatureVerdict& verdict, int level, std::uint64_t start,
                                      std::uint64_t end) {
    add(start + PART_HEADER_SIZE, "signature: part header", Coverage::None);
    if (verdict.holds(level) && hasHeader_)
        for (std::size_t i = unsettled_; i < ranges_.size(); ++i)
            if (ranges_[i].offset >= digestStart_) ranges_[i].coverage = Coverage::Signed;
    if (verdict.isWhole) takeSignaturePayload(verdict, level, start + PART_HEADER_SIZE);
    add(end, "signature: bytes that nobody reads", Coverage::None);
    unsettled_ = ranges_.size();
    hasHeader_ = false;
    digestStart_ = end;
}

void SignatureCoverage::takeSignaturePayload(const SignatureVerdict& verdict, int level, std::uint64_t start) {
    const bool kcdsaCounts = verdict.kcdsaHolds && level == 1;
    const auto takeKind = [this](std::uint64_t end, const std::string& what, bool counts, bool otherCounts) {
        add(end,
            what + (!counts       ? ", not relied on"
                    : otherCounts ? ", not needed beside the other kind"
                                  : ""),
            counts && !otherCounts ? Coverage::Signature : Coverage::None);
    };
    add(start + SIGNATURE_R_OFFSET, "signature: unused bytes", Coverage::None);
    takeKind(start + SIGNATURE_ED25519_OFFSET, "signature: EC-KCDSA", kcdsaCounts, verdict.ed25519Holds);
    if (verdict.isLong) takeKind(start + LONG_SIGNATURE_SIZE, "signature: Ed25519", verdict.ed25519Holds, kcdsaCounts);
}

std::vector<ByteRange> SignatureCoverage::finish(std::uint64_t fileSize) {
    add(fileSize, "no whole part", Coverage::None);
    return std::move(ranges_);
}

void SignatureCoverage::add(std::uint64_t end, std::string what, Coverage coverage) {
    if (end <= end_) return;
    ranges_.push_back({.offset = end_, .size = end - end_, .what = std::move(what), .coverage = coverage});
    end_ = end;
}
