#include "kvpack/member_package.h"

#include "kvpack/package_parts.h"
#include "package/bytes.h"
#include "package/package_header.h"

namespace {

/// What has been seen of a member.
struct Progress {
    bool hasHeader = false;
    bool hasMarker = false;
    bool isSigned = false;
};

/// What stands against a part at its place in a member; nothing if it may stand there.
Failure checkPlace(PartId id, const Progress& seen, bool needsMarker) {
    if (seen.isSigned) return "has a part behind its signature, which a member cannot have";
    if (id == PART_BUNDLE_HEADER) return "is a bundle, which cannot be a member";
    if (id == PART_PACKAGE_HEADER && seen.hasHeader) return "has a second header";
    if (id == PART_PACKAGE_HEADER && needsMarker && !seen.hasMarker)
        return "is signed over a SHA-1 digest: it has to come ahead of the members with a SHA-256 one";
    return std::nullopt;
}

Failure appendParts(PackageWriter& writer, const std::string& bundleName, PackageParts& file, bool& usesSha256) {
    PartReader& reader = file.reader();
    if (reader.magic() != PACKAGE_MAGIC) return "is no ordinary package";
    Progress seen;
    while (file.nextPart()) {
        const PartId id = reader.partId();
        if (auto failure = checkPlace(id, seen, usesSha256)) return failure;
        seen.hasHeader |= id == PART_PACKAGE_HEADER;
        seen.hasMarker |= id == PART_SHA256_MARKER;
        seen.isSigned = id == PART_SIGNATURE;
        writer.beginPart(id);
        for (std::string piece = readPiece(reader); !piece.empty(); piece = readPiece(reader)) {
            if (id == PART_PACKAGE_HEADER && untilNul(piece.substr(0, NAME_SIZE)) == bundleName)
                return "has the name of the bundle, which a member cannot have";
            writer.write(piece);
        }
        writer.endPart();
    }
    usesSha256 |= seen.hasMarker;
    if (file.cutOff()) return "is cut off";
    if (!seen.hasHeader || !seen.isSigned) return "is no signed package";
    return std::nullopt;
}

}  // namespace

Failure appendMember(PackageWriter& writer, const std::string& bundleName, const std::string& path, bool& usesSha256) {
    PackageParts file(path);
    if (auto failure = file.openFailure()) return failure;
    if (auto failure = appendParts(writer, bundleName, file, usesSha256)) return path + ' ' + *failure;
    return std::nullopt;
}
