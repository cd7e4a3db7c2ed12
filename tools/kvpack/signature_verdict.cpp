#include "kvpack/signature_verdict.h"

#include <algorithm>
#include <array>

#include "package/kcdsa.h"
#include "package/package_signature.h"
#include "platform/cipherkit.h"

SignatureVerdict checkSignature(PartReader& reader, const PublicKeys& keys) {
    SignatureVerdict verdict{.isLong = reader.partSize() >= LONG_SIGNATURE_SIZE, .usesSha256 = reader.usesSha256()};
    reader.finishDigest();
    std::array<std::byte, LONG_SIGNATURE_SIZE> payload{};
    const std::size_t size = verdict.isLong ? LONG_SIGNATURE_SIZE : SHORT_SIGNATURE_SIZE;
    verdict.isWhole = reader.partLeft() >= size && reader.takeRaw(std::span(payload).first(size));
    if (!verdict.isWhole) return verdict;

    const std::span bytes(payload);
    Scalar v;
    std::ranges::copy(bytes.subspan<SIGNATURE_V_OFFSET, 32>(), v.begin());
    verdict.kcdsaHolds =
        verifyKcdsa(keys.kcdsa, reader.digest().first<20>(), bytes.subspan<SIGNATURE_R_OFFSET, 16>(), v);
    verdict.ed25519Holds = verdict.isLong && verdict.usesSha256 &&
                           eddsa::verify(keys.ed25519, reader.digest(), bytes.subspan<SIGNATURE_ED25519_OFFSET, 64>());
    return verdict;
}
