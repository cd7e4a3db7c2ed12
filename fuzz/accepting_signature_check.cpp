#include <array>

#include "package/package_signature.h"

/// A signature check that every payload of a size that can be one passes, so that made-up packages reach what lies
/// behind it. It takes the place of all of package_signature.cpp: if that had anything else that is needed, both
/// would be linked, and the linker would complain of two definitions.

int signatureLevel(const PackageInfo& /*package*/) { return 1; }

bool checkPackageSignature(PartReader& reader, int /*level*/) {
    if (reader.partId() != PART_SIGNATURE || !reader.isHashing()) return false;
    reader.finishDigest();
    std::array<std::byte, SHORT_SIGNATURE_SIZE> payload;
    return reader.partLeft() >= payload.size() && reader.takeRaw(payload);
}
