#include "planning/selection.h"

#include <list>

#include <gtest/gtest.h>

#include "database/package_db.h"

namespace {

struct SelectionTest : testing::Test {
    PackageInfo& add(const char* name, PackageVersion version, std::uint32_t buildTime = 0) {
        packages.emplace_back(name);
        packages.back().version = version;
        packages.back().buildTime = buildTime;
        return packages.back();
    }

    PackageInfo& addBundle(const char* name, PackageVersion version, std::vector<PackageInfo> members) {
        PackageInfo& bundle = add(name, version);
        bundle.isBundle = true;
        bundle.members = std::move(members);
        return bundle;
    }

    /// The names and versions left, in order; the warnings stand in `db`.
    std::string select(PackageVersion limit = NO_DOWNGRADE, bool report = true) {
        db.messages.clear();
        std::vector<PackageInfo*> list;
        for (PackageInfo& package : packages) list.push_back(&package);
        testing::internal::CaptureStdout();
        selectPackages(db, list, limit, report);
        (void)testing::internal::GetCapturedStdout();
        std::string text;
        for (const PackageInfo* package : list) text += nameVersion(*package) + ' ';
        return text;
    }

    std::list<PackageInfo> packages;
    PackageDb db;
};

constexpr PackageVersion V61 = 0x06016600;
constexpr PackageVersion V62 = 0x06026600;

using Messages = std::vector<std::string>;

TEST_F(SelectionTest, KeepsTheBestOfAName) {
    add("a", V61);
    add("a", V62, 1);
    add("a", V62);
    EXPECT_EQ(select(), "a-6.2 ");
    EXPECT_EQ(db.messages, (Messages{"WARNING: omitting package a-6.1: newer package is already provided",
                                     "WARNING: omitting package a-6.2: newer package is already provided"}));
    EXPECT_EQ(select(NO_DOWNGRADE, false), "a-6.2 ");
    EXPECT_EQ(db.messages, Messages{});
    EXPECT_EQ(select(0x06000000), "a-6.1 ");
    EXPECT_EQ(db.messages,
              (Messages(2, "WARNING: omitting package a-6.2: older package is already provided")));
    // The one below the limit is gone, and still puts the others out.
    EXPECT_EQ(select(V61 + 1, false), "");
    EXPECT_EQ(db.messages, Messages{"WARNING: ommitting package a-6.1: not allowed"});
}

TEST_F(SelectionTest, EqualPackagesPutEachOtherOut) {
    add("a", V61);
    add("a", V61);
    addBundle("suite", V61, {PackageInfo(add("b", V61))});
    addBundle("twin", V61, {});
    addBundle("twin", V61, {});
    EXPECT_EQ(select(), "suite-6.1 ");  // which beats the single package that it holds
    EXPECT_EQ(db.messages, Messages{});
}

TEST_F(SelectionTest, ABundleLosesAgainstANewerMember) {
    addBundle("suite", V62, {PackageInfo(add("b", V61))});
    packages.front().version = V62;
    EXPECT_EQ(select(), "b-6.2 ");
    EXPECT_EQ(db.messages,
              Messages{"WARNING: omitting package suite-6.2: newer package is already provided"});
}

TEST_F(SelectionTest, PutsWhatIsNeededAndWhatWouldConflictFirst) {
    add("app", V61).dependencies = {{.name = "lib"}, {.name = "shell"}};
    add("x", V61);
    add("lib", V61);
    add("guard", V61).conflicts = {{.name = "app"}};
    add("sh", V61).provides = {{.name = "shell"}};
    // Without a relation the order turns round; each comes behind the last one that has to precede it.
    EXPECT_EQ(select(), "sh-6.1 guard-6.1 lib-6.1 x-6.1 app-6.1 ");
    packages.reverse();
    EXPECT_EQ(select(), "x-6.1 lib-6.1 guard-6.1 sh-6.1 app-6.1 ");
}

TEST_F(SelectionTest, EndsOnACycle) {
    add("a", V61).dependencies = {{.name = "b"}};
    add("b", V61).dependencies = {{.name = "a"}};
    EXPECT_EQ(select(), "a-6.1 b-6.1 ");
}

}  // namespace
