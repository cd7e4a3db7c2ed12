#include "kvpack/build_package.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "kvpack/file_tree.h"
#include "kvpack/member_package.h"
#include "kvpack/output_file.h"
#include "package/package_signature.h"

namespace {

Failure writeImage(PackageWriter& writer, const std::string& path) {
    std::ifstream image(path, std::ios::binary);
    if (!image) return "cannot read the image " + path + ": " + std::strerror(errno);
    writer.beginPart(PART_IMAGE);
    std::array<char, 65536> piece;
    while (image.read(piece.data(), piece.size()), image.gcount() != 0)
        writer.write({piece.data(), static_cast<std::size_t>(image.gcount())});
    writer.endPart();
    if (!image.eof()) return "cannot read the image " + path;
    return std::nullopt;
}

}  // namespace

Failure buildPackage(const PackageRecipe& recipe, const SigningKeys& keys, const std::string& output) {
    OutputFile file(output);
    PackageWriter writer(file.stream(), recipe.magic);
    // In front of the header, so that the digest covers all of the package.
    if (recipe.sha256Marker) writer.part(PART_SHA256_MARKER, "");
    writer.describe(recipe.info, PART_PACKAGE_HEADER);
    if (!recipe.image.empty())
        if (auto failure = writeImage(writer, recipe.image)) return failure;
    if (!recipe.tree.empty())
        if (auto failure = writeFileTree(writer, recipe.tree)) return failure;
    writer.sign(keys, recipe.ed25519 ? LONG_SIGNATURE_SIZE : SHORT_SIGNATURE_SIZE);
    writer.finish();
    return file.finish();
}

Failure buildBundle(const BundleRecipe& recipe, const std::string& output) {
    OutputFile file(output);
    PackageWriter writer(file.stream());
    writer.describe(recipe.info, PART_BUNDLE_HEADER);
    if (!recipe.image.empty())
        if (auto failure = writeImage(writer, recipe.image)) return failure;
    writer.list(PART_BUNDLE_MEMBERS, recipe.disabledMembers);
    bool usesSha256 = false;
    for (const std::string& member : recipe.members)
        if (auto failure = appendMember(writer, recipe.info.name, member, usesSha256)) return failure;
    writer.finish();
    return file.finish();
}
