#include "database/package_db.h"

#include <algorithm>
#include <optional>

#include "package/package_header.h"
#include "package/part_reader.h"
#include "platform/directory_entries.h"
#include "platform/file_source.h"

namespace {

/// The names in the database directory that may stand for a package.
std::optional<std::vector<std::string>> entryNames() {
    auto names = directoryEntries(InstalledPackage::root);
    if (names) std::erase_if(*names, [](const std::string& name) { return name.starts_with('.'); });
    return names;
}

using Records = std::vector<std::unique_ptr<InstalledPackage>>;

/// Appends the members of the bundle whose header the reader has just passed.
void readMembers(PartReader& reader, const InstalledPackage& bundle, Records& packages) {
    while (reader.partId() == PART_PACKAGE_HEADER) {
        auto member = std::make_unique<InstalledPackage>("");
        const bool parsed = parsePackageHeader(*member, reader);
        if (!parsed && reader.partId() == PART_PACKAGE_HEADER) return;  // cut off before it had a name
        member->bundle = {.name = bundle.name, .minVersion = bundle.version, .maxVersion = bundle.version};
        packages.push_back(std::move(member));
    }
}

/// Appends what a package image describes: the members of a bundle, then the package itself.
void readImage(FileSource& image, std::unique_ptr<InstalledPackage> package, Records& packages) {
    PartReader reader(image, false, nullptr);
    reader.want({PART_BUNDLE_HEADER, PART_PACKAGE_HEADER, PART_TEXT24, PART_NOTE, PART_DEPENDENCIES, PART_PROVIDES,
                 PART_CONFLICTS});
    const bool isBundle = reader.nextPart() == PART_BUNDLE_HEADER;
    // A record that cannot be read stays with what it has; without a version the meta files complete it.
    (void)parsePackageHeader(*package, reader);
    if (isBundle) readMembers(reader, *package, packages);
    packages.push_back(std::move(package));
}

}  // namespace

PackageDb& PackageDb::instance() {
    static PackageDb& db = *std::make_unique<PackageDb>().release();
    return db;
}

void PackageDb::load(bool isQuiet, const std::string& archName) {
    quiet = isQuiet;
    arch = archName;
    if (!loadImages(InstalledPackage::root, false)) {
        warning("could not open repo");
        return;
    }
    loadImages("/rw/pckg/.images/", true);
    const auto names = entryNames();
    if (!names) return;
    for (const auto& package : packages) package->loadState();
    for (const std::string& name : *names) {
        if (indexOf(name) >= 0) continue;
        auto package = std::make_unique<InstalledPackage>(name);
        package->loadState();
        packages.push_back(std::move(package));
    }
}

/// Loads the image of every entry of the database that has one: `image` in the entry's own directory, or,
/// if `flat`, the file of the entry's name under `imageRoot`. False if the database cannot be opened.
bool PackageDb::loadImages(const std::string& imageRoot, bool flat) {
    const auto names = entryNames();
    if (!names) return false;
    for (const std::string& name : *names) {
        auto package = std::make_unique<InstalledPackage>(name);
        FileSource image(flat ? imageRoot + name : package->directory() + "image");
        if (image.isOpen()) readImage(image, std::move(package), packages);
    }
    return true;
}

std::ptrdiff_t PackageDb::indexOf(std::string_view name) const {
    const auto found =
        std::ranges::find(packages, name, [](const auto& package) -> std::string_view { return package->name; });
    return found == packages.end() ? -1 : found - packages.begin();
}

InstalledPackage* PackageDb::find(std::string_view name) const {
    const auto index = indexOf(name);
    return index < 0 ? nullptr : packages[static_cast<std::size_t>(index)].get();
}

std::unique_ptr<InstalledPackage> PackageDb::release(const InstalledPackage& package) {
    const auto found = std::ranges::find(packages, &package, [](const auto& owned) { return owned.get(); });
    std::unique_ptr<InstalledPackage> released = std::move(*found);
    packages.erase(found);
    return released;
}
