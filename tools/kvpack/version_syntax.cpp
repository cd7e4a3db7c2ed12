#include "kvpack/version_syntax.h"

#include <charconv>
#include <cstdint>

namespace {

/// Takes a decimal number of at most `limit` off the front.
std::optional<std::uint32_t> takeNumber(std::string_view& text, std::uint32_t limit) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number > limit) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// Takes the name of a stage and returns its base in the lower half of a version.
std::uint32_t takeStage(std::string_view& text) {
    if (takePrefix(text, "_ab")) return 0;
    if (takePrefix(text, "alpha")) return 'a' << 8;
    if (takePrefix(text, "beta")) return 'b' << 8;
    if (takePrefix(text, "rc")) return 'c' << 8;
    (void)takePrefix(text, ".");
    return 'f' << 8;
}

}  // namespace

std::optional<PackageVersion> parseVersion(std::string_view text) {
    std::string_view rest = text;
    const auto major = takeNumber(rest, 0xFF);
    if (!major || !takePrefix(rest, ".")) return std::nullopt;
    const auto minor = takeNumber(rest, 0xFF);
    if (!minor) return std::nullopt;
    PackageVersion version = *major << 24 | *minor << 16;
    const std::uint32_t stage = takeStage(rest);
    version |= stage;
    if (!rest.empty()) {
        const auto number = takeNumber(rest, stage == 0 ? 0x60FF : 0xFF);
        if (!number || !rest.empty()) return std::nullopt;
        version |= *number;
    }
    // Printing it back refuses the forms that nobody writes: a leading zero, a number of 0, a stray dot.
    return versionText(version) == text ? std::optional(version) : std::nullopt;
}
