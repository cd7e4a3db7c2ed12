#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kvpack/signature_verdict.h"
#include "package/part_reader.h"

/// What the signatures of a file say about a range of its bytes.
enum class Coverage {
    Signed,     ///< in a digest that is signed
    Signature,  ///< the signature that an install relies on; any change breaks it
    None,       ///< anybody could change it
};

const char* coverageText(Coverage coverage);

struct ByteRange {
    std::uint64_t offset;
    std::uint64_t size;
    std::string what;
    Coverage coverage;
};

/// Divides a file into ranges, part by part, by what its signatures cover. The digest of a package begins with
/// the part header of its package header, or of the first SHA-256 marker of the file if that comes later, and
/// ends with the part header of the signature. It takes in all that lies between, and nothing else.
class SignatureCoverage {
public:
    /// The file header is the first range, and covered by nothing.
    explicit SignatureCoverage(std::uint64_t fileSize);

    /// Takes the next part, which is no signature. `end` is not beyond the file.
    void takePart(PartId id, std::uint64_t start, std::uint64_t end);

    /// Takes a signature, and settles what it covers when an install asks for this level (see
    /// signatureLevel()). Where either of two kinds is enough, neither is relied on: the other one makes good
    /// for any change of it.
    void takeSignature(const SignatureVerdict& verdict, int level, std::uint64_t start, std::uint64_t end);

    /// Takes what is left of the file. Returns the ranges: without a gap, in the order of the file.
    std::vector<ByteRange> finish(std::uint64_t fileSize);

private:
    void takeSignaturePayload(const SignatureVerdict& verdict, int level, std::uint64_t start);
    void add(std::uint64_t end, std::string what, Coverage coverage);

    std::vector<ByteRange> ranges_;
    std::uint64_t end_ = 0;          // of the last range
    std::uint64_t digestStart_ = 0;  // of the message that the running digest is of
    std::size_t unsettled_ = 0;      // first range that a signature could still cover
    bool hasHeader_ = false;         // since the last signature
    bool usesSha256_ = false;
};
