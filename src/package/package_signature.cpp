#include "package/package_signature.h"

#include <algorithm>
#include <array>
#include <span>

#include "package/kcdsa.h"
#include "package/trusted_keys.h"
#include "platform/cipherkit.h"
#include "platform/file_exists.h"

namespace {

struct LevelRange {
    PackageVersion last;
    int level;
};

constexpr LevelRange LEVELS[] = {{0x062E6608, 1},   // up to 6.46.8
                                 {0x062EFFFF, 2},   // from 6.46.9 to the end of 6.46
                                 {0x06306600, 1},   // from 6.47 up to 6.48
                                 {0x06FFFFFF, 2},   // behind 6.48, to the end of 6.x
                                 {0x07016203, 1},   // from 7.0 up to 7.1beta3
                                 {0xFFFFFFFF, 2}};  // everything above

}  // namespace

int signatureLevel(const PackageInfo& package) {
    if (fileExists("/ram/SECURE")) return 2;
    if (package.name == "branding") return 1;
    return std::ranges::lower_bound(LEVELS, package.version, {}, &LevelRange::last)->level;
}

bool checkPackageSignature(PartReader& reader, int level) {
    if (reader.partId() != PART_SIGNATURE || !reader.isHashing()) return false;
    reader.finishDigest();

    std::array<std::byte, LONG_SIGNATURE_SIZE> payload;
    const bool isLong = reader.partLeft() >= LONG_SIGNATURE_SIZE;
    if (reader.partLeft() < SHORT_SIGNATURE_SIZE) return false;
    if (!reader.takeRaw(std::span(payload).first(isLong ? LONG_SIGNATURE_SIZE : SHORT_SIGNATURE_SIZE))) return false;

    const std::span bytes(payload);
    if (isLong && reader.usesSha256() &&
        eddsa::verify(ed25519PublicKey, reader.digest(), bytes.subspan<SIGNATURE_ED25519_OFFSET, 64>()))
        return true;
    if (level != 1) return false;
    Scalar v;
    std::ranges::copy(bytes.subspan<SIGNATURE_V_OFFSET, 32>(), v.begin());
    return verifyKcdsa(kcdsaPublicKey, reader.digest().first<20>(), bytes.subspan<SIGNATURE_R_OFFSET, 16>(), v);
}
