#include "kvpack/sign_package.h"

#include "kvpack/output_file.h"
#include "kvpack/package_parts.h"
#include "kvpack/package_writer.h"
#include "package/package_signature.h"

namespace {

Failure signParts(PackageParts& file, PackageWriter& writer, const SigningKeys& keys) {
    PartReader& reader = file.reader();
    if (!isPackageMagic(reader.magic())) return "is no package";
    bool isSigned = false;
    while (file.nextPart()) {
        if (reader.partId() == PART_SIGNATURE)
            writer.sign(keys, reader.partSize() < LONG_SIGNATURE_SIZE ? SHORT_SIGNATURE_SIZE : LONG_SIGNATURE_SIZE);
        else
            copyPart(reader, writer);
        isSigned |= reader.partId() == PART_SIGNATURE;
    }
    if (file.cutOff()) return "is cut off";
    return isSigned ? std::nullopt : Failure("has no signature that could be replaced");
}

}  // namespace

Failure signPackage(const std::string& path, const SigningKeys& keys, const std::string& output) {
    PackageParts file(path);
    if (auto failure = file.openFailure()) return failure;
    OutputFile signedFile(output);
    PackageWriter writer(signedFile.stream(), file.reader().magic());
    if (auto failure = signParts(file, writer, keys)) return path + ' ' + *failure;
    writer.finish();
    return signedFile.finish();
}
