#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kvpack/file_records.h"
#include "kvpack/signature_verdict.h"
#include "package/package_info.h"

/// A part and what it says. Of the optional members, the one that suits its id is filled.
struct PartContents {
    PartId id = PART_END;
    std::uint32_t offset = 0;  ///< of its payload in the file
    std::uint32_t size = 0;    ///< of its payload, in bytes
    std::optional<PackageInfo> header;
    std::optional<std::string> text;  ///< at most MAX_TEXT_SIZE bytes of it
    std::optional<std::vector<PackageDependency>> entries;
    std::optional<std::vector<FileRecord>> files;
    std::optional<SignatureVerdict> signature;
    Failure fault;  ///< what is wrong with the payload
};

/// Reads the part that a hashing reader stands on. Its memory grows with names, not with contents.
PartContents readPart(PartReader& reader, const PublicKeys& keys);

/// What the parts of this id are called.
const char* partName(PartId id);
