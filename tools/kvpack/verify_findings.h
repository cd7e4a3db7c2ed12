#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kvpack/signature_coverage.h"
#include "kvpack/signature_verdict.h"

/// What is wrong with a file, and where.
struct Fault {
    std::uint64_t offset;
    std::string what;
};

struct CheckedSignature {
    std::uint64_t offset;  ///< of its payload
    std::string package;   ///< name and version
    SignatureVerdict verdict;
};

/// What a check of a package file comes to.
struct Findings {
    std::optional<Fault> fault;                ///< the first one of the file
    std::vector<CheckedSignature> signatures;  ///< in the order of the file
    std::vector<ByteRange> ranges;             ///< all of the file
};
