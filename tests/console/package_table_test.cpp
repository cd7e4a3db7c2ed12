#include "console/package_table.h"

#include <gtest/gtest.h>

#include "database/package_db.h"

namespace {

TEST(PackageTable, HasARowForEachRecord) {
    PackageDb db;
    const auto add = [&db](const char* name, PackageVersion version, std::uint32_t buildTime) -> InstalledPackage& {
        db.packages.push_back(std::make_unique<InstalledPackage>(name));
        db.packages.back()->version = version;
        db.packages.back()->buildTime = buildTime;
        return *db.packages.back();
    };
    InstalledPackage& member = add("beta", 0x07016203, 1767225600);
    member.bundle.name = "suite";
    member.disabled = true;
    member.note = "a note";
    add("a-name-far-too-long", 0x06300005, 0);
    add("last", 0x07026600, 0xFFFFFFFF).disabled = true;
    testing::internal::CaptureStdout();
    printPackageTable(db);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "            Name          Version                Built                                    Note\n"
              "----------------------------------------------------------------------------------------------\n"
              "            beta XB      7.1beta3 Jan/01/2026 00:00:00                                   a note\n"
              "a-name-far-too-long         6.48_ab5 Jan/01/1970 00:00:00                                         \n"
              "            last X            7.2 Feb/07/2106 06:28:15                                         \n");
}

}  // namespace
