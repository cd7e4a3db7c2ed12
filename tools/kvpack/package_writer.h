#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

#include "kvpack/signing_keys.h"
#include "package/container.h"
#include "package/package_info.h"
#include "package/part_reader.h"

/// Writes one package container to a stream that can be read and written at any place, as a file or a
/// string stream can. It streams: payloads are not held, sizes are put in when they are known, and the
/// digest is formed by reading back what was written. A failed write is the state of the stream.
class PackageWriter {
public:
    /// `out` is empty, and outlives the writer.
    explicit PackageWriter(std::iostream& out, std::uint32_t magic = PACKAGE_MAGIC);

    void beginPart(PartId id);
    void write(std::string_view bytes);
    void endPart();
    void part(PartId id, std::string_view payload);

    /// The header part and those of the other describing parts that are not empty. An architecture of
    /// "i386" needs no part; an empty one does.
    void describe(const PackageInfo& package, PartId headerId);
    void list(PartId id, const std::vector<PackageDependency>& entries);

    /// Appends PART_SIGNATURE over everything from the last PART_PACKAGE_HEADER on. Its size selects its
    /// form: SHORT_SIGNATURE_SIZE, EC-KCDSA only, or LONG_SIGNATURE_SIZE, Ed25519 too. Any other is cut off
    /// or padded.
    void sign(const SigningKeys& keys, std::size_t size);

    /// Puts the length into the file header. To come last.
    void finish();

private:
    std::vector<std::byte> digest();

    std::iostream& out_;
    std::streamoff partStart_ = 0;    // of the current part's header
    std::streamoff digestStart_ = 0;  // of the part header that the running message began with
    bool usesSha256_ = false;
};

/// Copies the part that a reader stands on.
void copyPart(PartReader& reader, PackageWriter& writer);
