#include "planning/selection.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/described.h"

namespace {

using Messages = std::vector<std::string>;

constexpr PackageVersion V61 = 0x06016600;
constexpr PackageVersion V62 = 0x06026600;
const std::string OF_61 = " =" + std::to_string(V61) + ' ';
const std::string OF_62 = " =" + std::to_string(V62) + ' ';

struct SelectionTest : testing::Test {
    /// The names and versions left of these packages, in order; the warnings stand in `db`.
    std::string select(std::vector<PackageInfo> packages, PackageVersion limit = NO_DOWNGRADE, bool report = true) {
        std::vector<PackageInfo*> list;
        for (PackageInfo& package : packages) list.push_back(&package);
        silently(db, [&] { return selectPackages(db, list, limit, report), 0; });
        std::string text;
        for (const PackageInfo* package : list) text += nameVersion(*package) + ' ';
        return text;
    }

    PackageDb db;
};

TEST_F(SelectionTest, KeepsTheBestOfAName) {
    const std::vector<PackageInfo> packages = {described("a" + OF_61), described("a t1" + OF_62),
                                               described("a" + OF_62)};
    EXPECT_EQ(select(packages), "a-6.2 ");
    EXPECT_EQ(db.messages, (Messages{"WARNING: omitting package a-6.1: newer package is already provided",
                                     "WARNING: omitting package a-6.2: newer package is already provided"}));
    EXPECT_EQ(select(packages, NO_DOWNGRADE, false), "a-6.2 ");
    EXPECT_EQ(db.messages, Messages{});
    EXPECT_EQ(select(packages, 0x06000000), "a-6.1 ");
    EXPECT_EQ(db.messages, (Messages(2, "WARNING: omitting package a-6.2: older package is already provided")));
    // The one below the limit is gone, and still puts the others out.
    EXPECT_EQ(select(packages, V61 + 1, false), "");
    EXPECT_EQ(db.messages, Messages{"WARNING: ommitting package a-6.1: not allowed"});
}

TEST_F(SelectionTest, EqualPackagesPutEachOtherOut) {
    EXPECT_EQ(select({described("a"), described("a"), described("b"), holding("suite", {described("b")}),
                      holding("twin", {}), holding("twin", {})}),
              "suite-7.0 ");  // which beats the single package that it holds
    EXPECT_EQ(db.messages, Messages{});
    EXPECT_EQ(select({holding("suite", {described("b" + OF_61)}), described("b" + OF_62)}), "b-6.2 ");
    EXPECT_EQ(db.messages, Messages{"WARNING: omitting package suite-7.0: newer package is already provided"});
}

TEST_F(SelectionTest, PutsWhatIsNeededAndWhatWouldConflictFirst) {
    std::vector<PackageInfo> packages = {described("app >lib >shell"), described("x"), described("lib"),
                                         described("guard !app"), described("sh <shell")};
    // Without a relation the order turns round; each comes behind the last one that has to precede it.
    EXPECT_EQ(select(packages), "sh-7.0 guard-7.0 lib-7.0 x-7.0 app-7.0 ");
    std::ranges::reverse(packages);
    EXPECT_EQ(select(packages), "x-7.0 lib-7.0 guard-7.0 sh-7.0 app-7.0 ");
    EXPECT_EQ(select({described("a >b"), described("b >a")}), "a-7.0 b-7.0 ") << "a cycle ends";
}

}  // namespace
