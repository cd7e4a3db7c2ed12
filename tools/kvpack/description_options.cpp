#include "kvpack/description_options.h"

#include <charconv>
#include <map>

#include "kvpack/version_syntax.h"
#include "package/package_header.h"

namespace {

constexpr std::size_t MAX_LIST_ENTRIES = 0xFFFF;  // its count has 16 bits

/// Takes the text in front of the next colon off the front.
std::string takeField(std::string& text) {
    const auto colon = text.find(':');
    std::string field = text.substr(0, colon);
    text.erase(0, colon == std::string::npos ? colon : colon + 1);
    return field;
}

PackageVersion versionFrom(const std::string& text) {
    const auto version = parseVersion(text);
    if (!version)
        throw CLI::ValidationError("version \"" + text +
                                   "\": expected one like 7.2, 7.2.1, 7.1beta3, 6.49rc1 or 6.48_ab5");
    return *version;
}

std::string nameFrom(const std::string& text) {
    const bool isUsable = !text.empty() && text.size() <= NAME_SIZE && text.front() != '.' &&
                          text.find_first_of("/ \t\n") == std::string::npos;
    if (!isUsable)
        throw CLI::ValidationError("name \"" + text +
                                   "\": expected 1 to 16 bytes, no blank or slash, and no dot in front");
    return text;
}

std::int32_t priorityFrom(const std::string& text) {
    std::int32_t priority = 0;
    const char* end = text.data() + text.size();
    if (const auto [at, error] = std::from_chars(text.data(), end, priority); error != std::errc() || at != end)
        throw CLI::ValidationError("priority \"" + text + "\": expected a whole number");
    return priority;
}

/// NAME[:LOWEST[:HIGHEST[:PRIORITY]]]; an empty field leaves that side open.
PackageDependency entryFrom(std::string text) {
    PackageDependency entry{.name = nameFrom(takeField(text))};
    if (const auto lowest = takeField(text); !lowest.empty()) entry.minVersion = versionFrom(lowest);
    if (const auto highest = takeField(text); !highest.empty()) entry.maxVersion = versionFrom(highest);
    if (!text.empty()) entry.priority = priorityFrom(text);
    return entry;
}

}  // namespace

void addEntryOption(CLI::App& command, const std::string& option, std::vector<PackageDependency>& entries,
                    const std::string& help) {
    command
        .add_option_function<std::vector<std::string>>(
            option,
            [option, &entries](const std::vector<std::string>& texts) {
                if (texts.size() > MAX_LIST_ENTRIES)
                    throw CLI::ValidationError(option + ": expected at most 65535 entries");
                for (const std::string& text : texts) entries.push_back(entryFrom(text));
            },
            help)
        ->type_name("ENTRY")
        ->allow_extra_args(false);
}

void addDescriptionOptions(CLI::App& command, PackageInfo& info, std::string& image, std::string& output) {
    const auto text = [&command](const std::string& option, std::string& value, const std::string& help) {
        command.add_option(option, value, help)->type_name("TEXT")->check([option](const std::string& given) {
            return given.size() > MAX_TEXT_SIZE ? option + ": expected at most 1 MiB" : std::string();
        });
    };
    command
        .add_option_function<std::string>(
            "--name", [&](const std::string& t) { info.name = nameFrom(t); }, "Name, at most 16 bytes")
        ->type_name("NAME")
        ->required();
    command
        .add_option_function<std::string>(
            "--version", [&](const std::string& t) { info.version = versionFrom(t); },
            "Version, as in 7.2, 7.2.1, 7.1beta3, 6.49rc1 or 6.48_ab5")
        ->type_name("VERSION")
        ->required();
    command.add_option("--build-time", info.buildTime, "Build time in seconds since 1970")
        ->type_name("SECONDS")
        ->envname("SOURCE_DATE_EPOCH")
        ->required();
    command
        .add_option_function<std::vector<std::string>>(
            "--flag",
            [&](const std::vector<std::string>& flags) {
                const std::map<std::string, std::uint32_t> bits = {
                    {"boot", PKG_FLAG_BOOT}, {"no-metadata", PKG_FLAG_NO_METADATA}, {"discard", PKG_FLAG_DISCARD}};
                for (const std::string& flag : flags) info.flags |= bits.at(flag);
            },
            "A header flag")
        ->type_name("FLAG")
        ->check(CLI::IsMember({"boot", "no-metadata", "discard"}))
        ->allow_extra_args(false);
    info.arch = "i386";
    text("--arch", info.arch, "Architecture, i386 if not given; empty for every one");
    text("--note", info.note, "Note that the package table shows");
    command.add_option("--image", image, "Squashfs file to take in as the image")->type_name("FILE");
    command.add_option("-o,--output", output, "Package file to write")->type_name("FILE")->required();
}
