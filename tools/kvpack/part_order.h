#pragma once

#include <cstdint>

#include "kvpack/failure.h"
#include "package/part_reader.h"

/// Follows the order of the parts of a file, and finds those that stand where an install passes over them or
/// refuses the package:
///
///     package   header, text 24, architecture, text 2, note, dependencies, provides, conflicts, image, files,
///               signature; each but the header and the signature may be missing
///     bundle    bundle header, text 24, architecture, text 2, note, image, disabled members; then packages
///
/// A SHA-256 marker and parts of unknown ids may stand between any two. Behind the last signature an
/// architecture may follow and, in a package, an empty dependency list.
class PartOrder {
public:
    /// Takes the next part. Returns what is wrong with its place.
    [[nodiscard]] Failure take(PartId id, std::uint32_t size);

    /// What is missing at the end of the file.
    [[nodiscard]] Failure finish() const;

private:
    [[nodiscard]] Failure takeHeader();
    [[nodiscard]] Failure takeTrailer(PartId id, std::uint32_t size);

    enum class Place { Start, BundleHead, Package, BehindSignature };
    Place place_ = Place::Start;
    int rank_ = 0;  // of the part before this one, in the order above
    bool isBundle_ = false;
    bool hasMarker_ = false;
};
