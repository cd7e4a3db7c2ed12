#include "kvpack/key_folder.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <sys/random.h>
#include <sys/stat.h>

#include "kvpack/output_file.h"
#include "package/trusted_keys.h"

namespace {

namespace fs = std::filesystem;

using Key = std::array<std::byte, 32>;

Failure readKeyFile(const std::string& path, Key& key) {
    std::ifstream file(path);
    if (!file) return "cannot read the key file " + path;
    std::string text;
    file >> text;
    bool isHex = text.size() == 2 * key.size();
    for (std::size_t i = 0; isHex && i < key.size(); ++i) {
        std::uint8_t value = 0;
        const char* digits = text.data() + 2 * i;
        isHex = std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2;
        key[i] = static_cast<std::byte>(value);
    }
    if (!isHex) return "the key file " + path + " does not hold 64 hex digits";
    return std::nullopt;
}

Failure writeKeyFile(const fs::path& path, const Key& key, mode_t mode) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : key) {
        text += DIGITS[std::to_integer<unsigned>(byte >> 4)];
        text += DIGITS[std::to_integer<unsigned>(byte & std::byte{0x0F})];
    }
    OutputFile file(path, mode);
    file.stream() << text << '\n';
    return file.finish();
}

Failure fillKeyFolder(const fs::path& folder) {
    std::array<Key, 2> secrets;
    if (::getentropy(secrets.data(), sizeof secrets) != 0)
        return std::string("no random numbers from the system: ") + std::strerror(errno);
    const Ed25519Key ed25519 = ed25519KeyFrom(secrets[0]);
    const KcdsaKey kcdsa = kcdsaKeyFrom(secrets[1]);
    if (auto failure = writeKeyFile(folder / "ed25519.key", ed25519.seed, 0600)) return failure;
    if (auto failure = writeKeyFile(folder / "ed25519.pub", ed25519.publicKey, 0644)) return failure;
    if (auto failure = writeKeyFile(folder / "kcdsa.key", kcdsa.privateKey, 0600)) return failure;
    return writeKeyFile(folder / "kcdsa.pub", kcdsa.publicKey, 0644);
}

}  // namespace

PublicKeys trustedKeys() { return {.ed25519 = ed25519PublicKey, .kcdsa = kcdsaPublicKey}; }

Failure loadSigningKeys(const std::string& folder, SigningKeys& keys) {
    std::array<std::byte, 32> seed;
    Scalar scalar;
    if (auto failure = readKeyFile(folder + "/ed25519.key", seed)) return failure;
    if (auto failure = readKeyFile(folder + "/kcdsa.key", scalar)) return failure;
    keys = {.ed25519 = ed25519KeyFrom(seed), .kcdsa = kcdsaKeyFrom(scalar)};
    return std::nullopt;
}

Failure loadPublicKeys(const std::string& folder, PublicKeys& keys) {
    if (auto failure = readKeyFile(folder + "/ed25519.pub", keys.ed25519)) return failure;
    return readKeyFile(folder + "/kcdsa.pub", keys.kcdsa);
}

Failure makeKeyFolder(const std::string& folder) {
    if (::mkdir(folder.c_str(), 0777) != 0) return "cannot make the folder " + folder + ": " + std::strerror(errno);
    auto failure = fillKeyFolder(folder);
    if (failure) {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    return failure;
}
