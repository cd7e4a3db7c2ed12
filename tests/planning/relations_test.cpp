#include "planning/relations.h"

#include <gtest/gtest.h>

namespace {

PackageInfo made(const char* name, PackageVersion version = 5, std::uint32_t buildTime = 0) {
    PackageInfo package(name);
    package.version = version;
    package.buildTime = buildTime;
    return package;
}

PackageInfo providing(PackageInfo package, std::vector<PackageDependency> provides) {
    package.provides = std::move(provides);
    return package;
}

PackageInfo conflicting(PackageInfo package, std::vector<PackageDependency> conflicts) {
    package.conflicts = std::move(conflicts);
    return package;
}

PackageInfo holding(PackageInfo bundle, std::vector<PackageInfo> members) {
    bundle.isBundle = true;
    bundle.members = std::move(members);
    return bundle;
}

TEST(Relations, ARangeIsMetByItsVersions) {
    struct Case {
        PackageVersion lowest, highest, version;
        bool isMet;
    };
    for (const auto& [lowest, highest, version, isMet] :
         {Case{0, 0, 1, true}, Case{5, 7, 4, false}, Case{5, 7, 5, true}, Case{5, 7, 7, true},
          Case{5, 7, 8, false}, Case{5, 0, 0xFFFFFFFF, true}, Case{0, 7, 0, true}}) {
        const PackageDependency range = {.name = "a", .minVersion = lowest, .maxVersion = highest};
        EXPECT_EQ(satisfiesDependency(made("a", version), range), isMet)
            << lowest << ' ' << highest << ' ' << version;
        EXPECT_FALSE(satisfiesDependency(made("b", version), range));
    }
}

TEST(Relations, AProviderMeetsRangesThatItOverlaps) {
    struct Case {
        PackageVersion from, to, lowest, highest;
        bool isMet;
    };
    for (const auto& [from, to, lowest, highest, isMet] :
         {Case{0, 0, 8, 9, true}, Case{5, 7, 8, 9, false}, Case{5, 7, 7, 0, true}, Case{5, 7, 0, 5, true},
          Case{5, 7, 0, 4, false}, Case{5, 0, 0, 4, false}, Case{0, 7, 8, 0, false},
          Case{5, 7, 0, 0, true}}) {
        const auto provider =
            providing(made("p", 1), {{.name = "x"}, {.name = "a", .minVersion = from, .maxVersion = to}});
        EXPECT_EQ(providesDependency(provider, {.name = "a", .minVersion = lowest, .maxVersion = highest}),
                  isMet)
            << from << ' ' << to << ' ' << lowest << ' ' << highest;
    }
}

TEST(Relations, PackagesCompareByVersionThenBuildTimeAndMembers) {
    const auto suite = holding(made("suite", 9), {made("a", 5, 2), made("b", 6)});
    struct Case {
        PackageInfo a, b;
        int order;
    };
    for (const auto& [a, b, order] :
         {Case{made("a", 6, 1), made("a", 5, 9), 1}, Case{made("a", 5, 1), made("a", 5, 2), -1},
          Case{made("a", 5, 1), made("a", 5, 1), 0}, Case{made("a", 6), made("b", 5), 0},
          Case{suite, made("a", 5, 1), 1}, Case{suite, made("b", 7), -1}, Case{suite, made("c", 7), 0},
          Case{suite, made("suite", 8), 1}}) {
        EXPECT_EQ(comparePackages(a, b), order) << a.name << ' ' << b.name;
        EXPECT_EQ(comparePackages(b, a), -order) << b.name << ' ' << a.name;
    }
    EXPECT_TRUE(hasName(suite, "b") && hasName(suite, "suite"));
    EXPECT_FALSE(hasName(suite, "c"));
}

TEST(Relations, ABundleDependsAsItsMembersDo) {
    auto a = made("a");
    a.dependencies = {{.name = "b", .minVersion = 5}};
    const auto provider = providing(made("p"), {{.name = "b"}});
    EXPECT_TRUE(dependsOn(a, made("b")));
    EXPECT_FALSE(dependsOn(a, made("b", 4)));
    EXPECT_TRUE(dependsOn(a, provider));
    EXPECT_TRUE(dependsOn(holding(made("suite"), {made("x"), a}), holding(made("other"), {provider})));
    EXPECT_FALSE(dependsOn(made("b"), a));
}

TEST(Relations, AConflictIsSeenFromTheOneThatIsThere) {
    const auto none = made("b");
    struct Case {
        const char* what;
        PackageInfo a, b;
        bool forward, backward;
    };
    for (const auto& [what, a, b, forward, backward] :
         {Case{"an unwanted version", conflicting(made("a"), {{.name = "b", .maxVersion = 5}}), none, true,
               false},
          Case{"another version", conflicting(made("a"), {{.name = "b", .maxVersion = 4}}), none, false,
               false},
          Case{"an unwanted name that b provides", conflicting(made("a"), {{.name = "x"}}),
               providing(none, {{.name = "x"}}), true, false},
          Case{"b stands in for a", made("a"), providing(none, {{.name = "a"}}), false, true},
          Case{"b ranks below a", made("a"), providing(none, {{.name = "a", .priority = -1}}), true, false},
          Case{"one thing, a ranks higher", providing(made("a"), {{.name = "x", .priority = 2}}),
               providing(none, {{.name = "x", .priority = 1}}), true, false},
          Case{"one thing, equal rank", providing(made("a"), {{.name = "x"}}),
               providing(none, {{.name = "x"}}), false, false},
          Case{"the first match decides",
               conflicting(providing(made("a"), {{.name = "y"}, {.name = "x"}, {.name = "z", .priority = 9}}),
                           {{.name = "x"}}),
               providing(none, {{.name = "x"}, {.name = "z"}}), false, false},
          Case{"b holds a", made("a"), holding(none, {made("a")}), true, false},
          Case{"a's member conflicts", holding(made("a"), {conflicting(made("m"), {{.name = "b"}})}), none,
               true, false},
          Case{"a placeholder", conflicting(made("a", 0xFFFFFFFF, 0xFFFFFFFF), {{.name = "b"}}), none, false,
               false}}) {
        EXPECT_EQ(conflictsWith(a, b), forward) << what;
        EXPECT_EQ(conflictsWith(b, a), backward) << what;
    }
}

struct DatabaseQueryTest : testing::Test {
    InstalledPackage& add(const char* name, bool disabled, std::vector<PackageDependency> provides = {}) {
        db.packages.push_back(std::make_unique<InstalledPackage>(name));
        db.packages.back()->version = 5;
        db.packages.back()->disabled = disabled;
        db.packages.back()->provides = std::move(provides);
        return *db.packages.back();
    }

    PackageDb db;
};

TEST_F(DatabaseQueryTest, FindsProvidersActiveOrNot) {
    const auto* own = &add("x", true);
    add("placeholder", false, {{.name = "x"}}).version = 0xFFFFFFFF;
    db.packages.back()->buildTime = 0xFFFFFFFF;
    const auto* provider = &add("p", false, {{.name = "x", .minVersion = 8}});
    EXPECT_EQ(findProviders(db, {.name = "x"}),
              (std::vector<InstalledPackage*>{db.packages[0].get(), db.packages[2].get()}));
    EXPECT_EQ(findProviders(db, {.name = "x", .maxVersion = 7}).front(), own);
    EXPECT_EQ(findProviders(db, {.name = "x", .minVersion = 6}).front(), provider);
}

TEST_F(DatabaseQueryTest, PrefersTheFirstActiveOrTheLastDisabled) {
    add("x", true);
    const auto* last = &add("p", true, {{.name = "x"}});
    EXPECT_EQ(findActiveOrLast(db, "x"), last);
    const auto* active = &add("q", false, {{.name = "x"}});
    add("r", false, {{.name = "x"}});
    EXPECT_EQ(findActiveOrLast(db, "x"), active);
    EXPECT_EQ(findActiveOrLast(db, "y"), nullptr);
}

TEST_F(DatabaseQueryTest, FindsConflictsOfActivePackagesOnly) {
    add("a", true).conflicts = {{.name = "b"}};
    EXPECT_EQ(findConflict(db, made("b")), nullptr);
    const auto* active = &add("c", false);
    db.packages.back()->conflicts = {{.name = "b"}};
    EXPECT_EQ(findConflict(db, made("b")), active);
}

}  // namespace
