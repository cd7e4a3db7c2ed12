#include <filesystem>

#include <gtest/gtest.h>

#include "database/package_db.h"
#include "support/device_root.h"

namespace {

/// A record in one line: name version-buildTime, state, and what it names.
std::string summary(const InstalledPackage& package) {
    std::string text = package.name + ' ' + versionText(package.version) + '-' + std::to_string(package.buildTime);
    text += package.disabled ? " disabled" : " active";
    if (package.user) text += " user";
    if (package.isBundle) text += " bundle";
    text += " scheduled " + std::to_string(static_cast<unsigned>(package.scheduled));
    if (package.isMember())
        text += " of " + package.bundle.name + ' ' + std::to_string(package.bundle.minVersion) + ' ' +
                std::to_string(package.bundle.maxVersion);
    for (const auto* list : {&package.dependencies, &package.provides, &package.conflicts}) {
        text += " |";
        for (const PackageDependency& entry : *list)
            text += ' ' + entry.name + ':' + std::to_string(entry.minVersion) + ':' + std::to_string(entry.maxVersion) +
                    ':' + std::to_string(entry.priority);
    }
    for (const std::string& file : package.files) text += ' ' + file;
    return text;
}

struct DatabaseLoadTest : testing::Test {
    void meta(const std::string& package, const std::string& file, std::string_view content) const {
        device.write("/flash/var/pdb/" + package + '/' + file, content);
    }

    /// The record of a directory of meta files as a load gives it.
    static std::string loaded(const std::string& name) {
        PackageDb db;
        db.load(true, "i386");
        const InstalledPackage* package = db.find(name);
        return package == nullptr ? "(none)" : summary(*package);
    }

    static Lines summaries() {
        PackageDb db;
        db.load(true, "i386");
        Lines lines;
        for (const auto& package : db.packages) lines.push_back(summary(*package));
        return lines;
    }

    DeviceRoot device;
};

TEST_F(DatabaseLoadTest, ReadsMetaFiles) {
    meta("a", "version", "117466624 1000\n");
    meta("a", "deps", "b 1 2 c 3\n4\n");
    meta("a", "provides", "d 0 0 -5\n");
    meta("a", "conflicts", "e 0 9");
    meta("a", "files", "flash/etc/x\n\n/flash/etc/x\netc/y");
    EXPECT_EQ(loaded("a"), "a 7.0-1000 active scheduled 0 | b:1:2:0 c:3:4:0 | d:0:0:-5 | e:0:9:0 /etc/y /flash/etc/x");
}

TEST_F(DatabaseLoadTest, MarksDamageForRemoval) {
    struct Case {
        const char *file, *content, *result;
    };
    for (const auto& [file, content, result] :
         {Case{"version", "", "a 0.0-0 active scheduled 1 | | |"},
          Case{"version", "117466624", "a 7.0-0 active scheduled 1 | | |"},
          Case{"deps", "b 1 2 c 3", "a 7.0-5 active scheduled 1 | b:1:2:0 | |"},
          Case{"provides", "d 0 0\n", "a 7.0-5 active scheduled 1 | | |"},
          Case{"conflicts", "d x 0\n", "a 7.0-5 active scheduled 1 | | |"},
          Case{"bundle", " suite rest", "a 7.0-5 active scheduled 1 of suite 0 0 | | |"}}) {
        meta("a", "version", "117466624 5\n");
        meta("a", "files", "");
        for (const char* list : {"deps", "provides", "conflicts", "bundle"}) meta("a", list, "");
        meta("a", file, content);
        EXPECT_EQ(loaded("a"), result) << file << ' ' << content;
    }
}

TEST_F(DatabaseLoadTest, ReadsStatesAndRequests) {
    struct Case {
        const char *disabled, *enabled, *request, *result;  // null: no such file
    };
    for (const auto& [disabled, enabled, request, result] :
         {Case{nullptr, nullptr, nullptr, "active scheduled 0"},
          Case{"auto\n", nullptr, nullptr, "disabled scheduled 0"},
          Case{"user\n", nullptr, nullptr, "disabled user scheduled 0"},
          Case{"", nullptr, nullptr, "disabled user scheduled 0"},
          Case{"automatic", nullptr, nullptr, "disabled user scheduled 0"},
          Case{nullptr, "", nullptr, "active user scheduled 0"}, Case{"auto", "user", nullptr, "disabled scheduled 0"},
          Case{"auto", nullptr, "uninstall", "disabled scheduled 1"},
          Case{"auto", nullptr, " enable\n", "disabled user scheduled 2"},
          Case{nullptr, nullptr, "disable now", "active user scheduled 3"},
          Case{nullptr, nullptr, "remove", "active scheduled 0"}, Case{nullptr, nullptr, "", "active scheduled 0"}}) {
        const std::filesystem::path directory = "/flash/var/pdb/a.b-1";
        std::filesystem::remove_all(directory);
        std::filesystem::remove_all("/ram/pdb");
        meta("a.b-1", "version", "117466624 5");
        meta("a.b-1", "files", "");
        if (disabled != nullptr) meta("a.b-1", "disabled", disabled);
        if (enabled != nullptr) meta("a.b-1", "enabled", enabled);
        if (request != nullptr) device.write("/ram/pdb/ab-1/schedule", request);
        EXPECT_EQ(loaded("a.b-1"), std::string("a.b-1 7.0-5 ") + result + " | | |");
    }
}

TEST_F(DatabaseLoadTest, ReadsImages) {
    const std::string suite =
        bundle("suite").note("n").member(package("m1").depends("x")).member(package("m2").sha1()).bytes();
    meta("suite", "image", suite);
    EXPECT_EQ(summaries(), (Lines{"m1 7.0-1000 active scheduled 0 of suite 117466624 117466624 | x:0:0:0 | |",
                                  "m2 7.0-1000 active scheduled 0 of suite 117466624 117466624 | | |",
                                  "suite 7.0-1000 active bundle scheduled 0 | | |"}));
    // Cut off inside a member's header, it gives what is ahead.
    const auto second = suite.find("m2");
    for (const std::size_t length : {second - 6, second, second + 31}) {
        meta("suite", "image", suite.substr(0, length));
        EXPECT_EQ(summaries().size(), 2U) << length;
    }
    meta("suite", "image", suite.substr(0, second + 32));
    EXPECT_EQ(summaries().size(), 3U);
}

TEST_F(DatabaseLoadTest, CompletesABadImageFromMetaFiles) {
    meta("a", "version", "117466624 5");
    meta("a", "files", "");
    meta("a", "image", "no package");
    EXPECT_EQ(summaries(), Lines{"a 7.0-5 active scheduled 0 | | |"});
}

TEST_F(DatabaseLoadTest, FindsFlashBeforeStoredImages) {
    meta("a", "image", package("a").buildTime(1).bytes());
    meta("b", "version", "");
    meta(".hidden", "version", "");
    device.write("/rw/pckg/.images/a", package("a").buildTime(2).bytes());
    device.write("/rw/pckg/.images/b", package("b").arch("mips").buildTime(3).bytes());
    device.write("/rw/pckg/.images/unknown", package("unknown").bytes());
    PackageDb db;
    db.load(true, "mips");
    EXPECT_EQ(db.packages.size(), 3U);
    EXPECT_EQ(db.find("a")->buildTime, 1U);
    EXPECT_EQ(db.find("b")->buildTime, 3U);
    EXPECT_EQ(db.find("b")->arch, "i386");  // not read here
    EXPECT_EQ(db.indexOf("unknown"), -1);
    EXPECT_EQ(db.arch, "mips");
}

TEST_F(DatabaseLoadTest, AsksNoRequestOfAPlaceholder) {
    meta("a", "version", "4294967295 4294967295");
    meta("a", "files", "");
    device.write("/ram/pdb/a/schedule", "uninstall");
    EXPECT_EQ(loaded("a"), "a 255.255255-4294967295 active scheduled 0 | | |");
}

}  // namespace
