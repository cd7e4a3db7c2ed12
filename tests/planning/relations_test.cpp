#include "planning/relations.h"

#include <gtest/gtest.h>

#include "support/described.h"

namespace {

TEST(Relations, ADependencyIsMetByVersionsInItsRangeAndProvidersThatOverlapIt) {
    struct Case {
        const char *package, *range;
        bool satisfies, provides;
    };
    for (const auto& [package, range, satisfies, provides] :
         {Case{"a =1", ">a", true, false}, Case{"a =4", ">a:5:7", false, false}, Case{"a =5", ">a:5:7", true, false},
          Case{"a =7", ">a:5:7", true, false}, Case{"a =8", ">a:5:7", false, false},
          Case{"a =4294967295", ">a:5", true, false}, Case{"a =0", ">a:0:7", true, false},
          Case{"b =5", ">a", false, false}, Case{"p <x <a", ">a:8:9", false, true},
          Case{"p <a:5:7", ">a:8:9", false, false}, Case{"p <a:5:7", ">a:7", false, true},
          Case{"p <a:5:7", ">a:0:5", false, true}, Case{"p <a:5:7", ">a:0:4", false, false},
          Case{"p <a:5", ">a:0:4", false, false}, Case{"p <a:0:7", ">a:8", false, false},
          Case{"p <a:5:7", ">a", false, true}}) {
        const PackageDependency dependency = described(std::string("x ") + range).dependencies.front();
        EXPECT_EQ(satisfiesDependency(described(package), dependency), satisfies) << package << ' ' << range;
        EXPECT_EQ(providesDependency(described(package), dependency), provides) << package << ' ' << range;
    }
}

TEST(Relations, PackagesCompareByVersionThenBuildTimeAndMembers) {
    const auto suite = holding("suite =9", {described("a =5 t2"), described("b =6")});
    struct Case {
        PackageInfo a, b;
        int order;
    };
    for (const auto& [a, b, order] :
         {Case{described("a =6 t1"), described("a =5 t9"), 1}, Case{described("a t1"), described("a t2"), -1},
          Case{described("a"), described("a"), 0}, Case{described("a =6"), described("b =5"), 0},
          Case{suite, described("a =5 t1"), 1}, Case{suite, described("b =7"), -1}, Case{suite, described("c =7"), 0},
          Case{suite, described("suite =8"), 1}}) {
        EXPECT_EQ(comparePackages(a, b), order) << a.name << ' ' << b.name;
        EXPECT_EQ(comparePackages(b, a), -order) << b.name << ' ' << a.name;
    }
    EXPECT_TRUE(hasName(suite, "b") && hasName(suite, "suite") && !hasName(suite, "c"));
}

TEST(Relations, ABundleDependsAsItsMembersDo) {
    const auto a = described("a >b:5");
    const auto provider = described("p <b");
    EXPECT_TRUE(dependsOn(a, described("b =5")) && dependsOn(a, provider));
    EXPECT_FALSE(dependsOn(a, described("b =4")) || dependsOn(described("b"), a));
    EXPECT_TRUE(dependsOn(holding("suite", {described("x"), a}), holding("other", {provider})));
}

TEST(Relations, AConflictIsSeenFromTheOneThatIsThere) {
    struct Case {
        const char* what;
        PackageInfo a, b;
        bool forward, backward;
    };
    for (const auto& [what, a, b, forward, backward] :
         {Case{"an unwanted version", described("a !b:0:5"), described("b =5"), true, false},
          Case{"another version", described("a !b:0:4"), described("b =5"), false, false},
          Case{"an unwanted name that b provides", described("a !x"), described("b <x"), true, false},
          Case{"b stands in for a", described("a"), described("b <a"), false, true},
          Case{"b ranks below a", described("a"), described("b <a:0:0:-1"), true, false},
          Case{"one thing, a ranks higher", described("a <x:0:0:2"), described("b <x:0:0:1"), true, false},
          Case{"one thing, equal rank", described("a <x"), described("b <x"), false, false},
          Case{"the first match decides", described("a <y <x <z:0:0:9 !x"), described("b <x <z"), false, false},
          Case{"b holds a", described("a"), holding("b", {described("a")}), true, false},
          Case{"a's member conflicts", holding("a", {described("m !b")}), described("b"), true, false},
          Case{"a placeholder", described("a =4294967295 t4294967295 !b"), described("b"), false, false}}) {
        EXPECT_EQ(conflictsWith(a, b), forward) << what;
        EXPECT_EQ(conflictsWith(b, a), backward) << what;
    }
}

TEST(Relations, DatabaseQueriesGoByOrderAndState) {
    PackageDb db;
    auto* x = &addDescribed(db, "x =5 off");
    addDescribed(db, "placeholder =4294967295 t4294967295 <x");
    auto* p = &addDescribed(db, "p off <x:8 !b");
    using Found = std::vector<InstalledPackage*>;
    EXPECT_EQ(findProviders(db, {.name = "x"}), (Found{x, p}));
    EXPECT_EQ(findProviders(db, {.name = "x", .maxVersion = 7}), Found{x});
    EXPECT_EQ(findProviders(db, {.name = "x", .minVersion = 6}), Found{p});

    db.packages.erase(db.packages.begin() + 1);
    EXPECT_EQ(findActiveOrLast(db, "x"), p);
    EXPECT_EQ(findConflict(db, described("b")), nullptr);
    auto* q = &addDescribed(db, "q <x !b");
    addDescribed(db, "r <x !b");
    EXPECT_EQ(findActiveOrLast(db, "x"), q);
    EXPECT_EQ(findActiveOrLast(db, "y"), nullptr);
    EXPECT_EQ(findConflict(db, described("b")), q);
}

}  // namespace
