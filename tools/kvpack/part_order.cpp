#include "kvpack/part_order.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "kvpack/part_contents.h"
#include "package/container.h"

namespace {

constexpr PartId PACKAGE_ORDER[] = {PART_TEXT24,   PART_ARCHITECTURE, PART_TEXT2, PART_NOTE,  PART_DEPENDENCIES,
                                    PART_PROVIDES, PART_CONFLICTS,    PART_IMAGE, PART_FILES, PART_SIGNATURE};
constexpr PartId BUNDLE_ORDER[] = {PART_TEXT24, PART_ARCHITECTURE, PART_TEXT2,
                                   PART_NOTE,   PART_IMAGE,        PART_BUNDLE_MEMBERS};

/// Place of the id in an order, counted from 1; 0 if it has none.
template <std::size_t Count>
int rankIn(const PartId (&order)[Count], PartId id) {
    const auto* found = std::ranges::find(order, id);
    return found == std::end(order) ? 0 : static_cast<int>(found - order) + 1;
}

bool isKnown(PartId id) {
    return rankIn(PACKAGE_ORDER, id) != 0 || id == PART_BUNDLE_MEMBERS || id == PART_SHA256_MARKER;
}

}  // namespace

Failure PartOrder::take(PartId id, std::uint32_t size) {
    if (id == PART_PACKAGE_HEADER) return takeHeader();
    if (id == PART_BUNDLE_HEADER) {
        if (place_ != Place::Start) return "a bundle header stands behind other parts";
        place_ = Place::BundleHead;
        isBundle_ = true;
        return std::nullopt;
    }
    if (!isKnown(id)) return std::nullopt;
    if (id == PART_SHA256_MARKER) {
        const bool cutsHeaderOff = place_ == Place::Package && !hasMarker_;
        hasMarker_ = true;
        if (cutsHeaderOff) return "the SHA-256 marker stands behind the package header, which no signature then covers";
        return std::nullopt;
    }
    if (place_ == Place::Start) return "expected a package header or a bundle header first";
    if (place_ == Place::BehindSignature) return takeTrailer(id, size);
    const int rank = place_ == Place::BundleHead ? rankIn(BUNDLE_ORDER, id) : rankIn(PACKAGE_ORDER, id);
    if (rank <= rank_) return std::string("the part ") + partName(id) + " has no place here";
    rank_ = rank;
    if (id == PART_SIGNATURE) {
        place_ = Place::BehindSignature;
        rank_ = 0;
    }
    return std::nullopt;
}

Failure PartOrder::takeHeader() {
    if (place_ == Place::Package) return "a package header follows before the signature of the package ahead";
    if (place_ == Place::BehindSignature && !isBundle_) return "a second package follows, and this is no bundle";
    if (rank_ != 0 && place_ == Place::BehindSignature) return "a package follows behind the end of the bundle";
    place_ = Place::Package;
    rank_ = 0;
    return std::nullopt;
}

Failure PartOrder::takeTrailer(PartId id, std::uint32_t size) {
    const int rank = id == PART_ARCHITECTURE ? 1 : id == PART_DEPENDENCIES && size == 0 && !isBundle_ ? 2 : 0;
    if (rank <= rank_) return std::string("the part ") + partName(id) + " stands behind the signature";
    rank_ = rank;
    return std::nullopt;
}

Failure PartOrder::finish() const {
    switch (place_) {
        case Place::Start: return "there is no package header";
        case Place::BundleHead: return "the bundle has no members";
        case Place::Package: return "the signature is missing";
        case Place::BehindSignature: break;
    }
    return std::nullopt;
}
