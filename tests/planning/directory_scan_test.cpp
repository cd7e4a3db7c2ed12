#include "planning/directory_scan.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "support/described.h"
#include "support/device_root.h"

namespace {

struct DirectoryScanTest : testing::Test {
    DirectoryScanTest() { db.arch = "i386"; }

    /// The names of the candidates that the directory with this one file gives; the messages stand in `db`.
    /// A hole behind the bytes brings the file to `size`.
    Lines scan(const std::string& file, const std::string& bytes, std::uintmax_t size = 0) {
        std::filesystem::remove_all("/rw/p");
        device.write("/rw/p/" + file, bytes);
        if (size != 0) std::filesystem::resize_file("/rw/p/" + file, size);
        return silently(db, [this] {
            candidates.clear();
            scanPackageDirectory("/rw/p/", candidates, db);
            Lines names;
            for (const auto& candidate : candidates) names.push_back(candidate->name);
            return names;
        });
    }

    DeviceRoot device;
    PackageDb db;
    std::vector<std::unique_ptr<PackageFile>> candidates;
};

TEST_F(DirectoryScanTest, TakesWholePackagesByTheirSuffix) {
    const std::string bytes = package("a").note("n").bytes();
    const std::string suite = bundle("suite").image("i").member(package("m1")).member(package("m2")).bytes();
    const Lines found = {"a"};
    for (const char* name : {"x.kvp", "a b.dpk"}) EXPECT_EQ(scan(name, bytes), found) << name;
    for (const char* name : {"x.KVP", "x.kvp.old", ".x.kvp", "kvp"}) EXPECT_EQ(scan(name, bytes), Lines{}) << name;
    EXPECT_EQ(db.messages, Lines{});
    EXPECT_EQ(scan("suite.kvp", suite), Lines{"suite"});
    EXPECT_EQ(candidates.front()->path, "/rw/p/suite.kvp");
    ASSERT_EQ(candidates.front()->members.size(), 2U);
    EXPECT_EQ(candidates.front()->members[1].name, "m2");

    std::string cut = suite.substr(0, suite.find("m2") + 20);
    cut[4] = static_cast<char>(cut.size() - 8);  // below 64 KiB, so two bytes of the length
    cut[5] = static_cast<char>((cut.size() - 8) >> 8);
    for (const auto& [what, broken] : {std::pair{"one byte more", bytes + "x"},
                                       {"one byte less", bytes.substr(0, bytes.size() - 1)},
                                       {"wrong magic", "abcd" + bytes.substr(4)},
                                       {"too short", std::string("abc")},
                                       {"no header", container({{4, ""}})},
                                       {"no member", bundle("suite").bytes()},
                                       {"a member cut off", cut}}) {
        EXPECT_EQ(scan("x.kvp", broken), Lines{}) << what;
        EXPECT_EQ(db.messages, Lines{"ERROR: broken package x.kvp"}) << what;
    }
}

TEST_F(DirectoryScanTest, MeasuresFilesAbove2GiB) {
    std::string bytes = package("a").image("i").bytes();  // nothing behind an image is looked at
    bytes.replace(4, 4, "\xF8\xFF\xFF\xBF");              // 3 GiB, less the file header
    EXPECT_EQ(scan("x.kvp", bytes, 0xC0000000), Lines{"a"});
    EXPECT_EQ(scan("x.kvp", bytes, 0xC0000001), Lines{});
}

TEST_F(DirectoryScanTest, LeavesOutWhatIsNotForThisDevice) {
    struct Case {
        PackageBuilder package;
        Lines messages;
    };
    for (const auto& [built, messages] :
         {Case{package("a").arch("mips"), {"WARNING: can not install a-7.0: it is not made for i386, but for mips"}},
          Case{package("a").arch(""), {}}, Case{package("branding"), {}},
          Case{package("firmware-a"), {"ERROR: can not install firmware-a-7.0: not for this platform"}}}) {
        EXPECT_EQ(scan("x.kvp", built.bytes()).empty(), !messages.empty());
        EXPECT_EQ(db.messages, messages);
    }
    device.write("/sys/firmware/devicetree/base/firmware-package", std::string("firmware-a\0", 11));
    EXPECT_EQ(scan("x.kvp", package("firmware-a").bytes()), Lines{"firmware-a"});
    EXPECT_EQ(scan("x.kvp", package("firmware-").bytes()), Lines{});
    EXPECT_EQ(db.messages, Lines{"ERROR: can not install firmware--7.0: use firmware-a package instead"});

    device.write("/pckg/branding/FORCE_DEFCONF_ON_RESET", "");
    EXPECT_EQ(scan("x.kvp", package("branding").bytes()), Lines{});
    EXPECT_EQ(db.messages, Lines{"ERROR: can not replace protected branding with non-protected"});

    device.write("/rw/device-mode", "safe 1 2 3 4\n");
    EXPECT_EQ(scan("x.kvp", package("system").bytes()), Lines{});
    EXPECT_EQ(db.messages, Lines{"ERROR: will not install package system-7.0, not allowed by device-mode"});
    device.write("/ram/SECURE", "");
    EXPECT_EQ(scan("x.kvp", package("system").bytes()), Lines{"system"});
}

}  // namespace
