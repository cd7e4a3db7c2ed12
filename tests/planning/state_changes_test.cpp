#include "planning/state_changes.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/described.h"
#include "support/device_root.h"

namespace {

struct StateChangesTest : testing::Test {
    void add(const std::string& text) {
        const InstalledPackage& package = addDescribed(db, text);
        device.write(package.directory() + "version", "");
        if (package.disabled) device.write(package.directory() + "disabled", "auto\n");
    }

    /// Applies the requests to these packages and tells what is left: names, disabled ones in brackets.
    std::string settle(std::initializer_list<const char*> packages, int verbosity = 1) {
        db.packages.clear();
        journal.cancel();
        for (const char* text : packages) add(text);
        result = silently(db, [&] { return applySchedule(db, journal, verbosity); });
        std::string text;
        for (const auto& package : db.packages) {
            EXPECT_EQ(package->scheduled, Schedule::None) << package->name;
            text += package->disabled ? '[' + package->name + "] " : package->name + ' ';
        }
        return text;
    }

    using Messages = std::vector<std::string>;

    DeviceRoot device;
    PackageDb db;
    ChangeJournal journal;
    bool result = false;
};

TEST_F(StateChangesTest, LeavesAConsistentDatabaseAlone) {
    EXPECT_EQ(settle({"a >b", "b", "[c] off"}), "a b [[c]] ");
    EXPECT_FALSE(result);
    EXPECT_TRUE(journal.empty());
    EXPECT_EQ(settle({}), "");
    EXPECT_EQ(db.messages, Messages{});
}

TEST_F(StateChangesTest, KeepsWhatAnActivePackageNeeds) {
    EXPECT_EQ(settle({"a >b", "b uninstall"}), "a b ");
    EXPECT_EQ(db.messages, Messages{"WARNING: can not uninstall b-7.0: a depends on it"});
    EXPECT_FALSE(result);
    EXPECT_EQ(settle({"a >b", "b disable"}), "a b ");
    EXPECT_EQ(db.messages, Messages{"WARNING: can not disable b-7.0: a depends on it"});
    EXPECT_EQ(settle({"a >b", "b uninstall"}, 0), "a b ");
    EXPECT_EQ(db.messages, Messages{});
    // Another provider is as good, and a dependent that goes as well needs nothing.
    EXPECT_EQ(settle({"a >b", "b uninstall", "c <b"}), "a c ");
    EXPECT_EQ(settle({"a >b uninstall", "b uninstall", "z"}), "z ");
    EXPECT_EQ(settle({"a >b off", "b disable", "z"}), "[a] [b] z ");
    // Of several, the newest in dependency order is kept.
    EXPECT_EQ(settle({"a >b", "b =6 off", "b off", "c <b off"}), "a [b] b [c] ");
}

TEST_F(StateChangesTest, BringsBackWhatAnEnabledPackageNeeds) {
    EXPECT_EQ(settle({"a off enable >b", "b off >c", "c off"}), "a b c ");
    EXPECT_EQ(db.messages, (Messages{"enabled c-7.0", "enabled b-7.0", "enabled a-7.0"}));
    EXPECT_EQ(settle({"a >b", "b off"}), "a b ");
    // Its own request is dropped, and then it is only no longer due.
    EXPECT_EQ(settle({"a >b", "b off disable", "z"}), "[a] [b] z ");
}

TEST_F(StateChangesTest, DropsDependentsOfWhatIsGoneAndDisablesThoseOfWhatIsInactive) {
    EXPECT_EQ(settle({"a >none", "b >a", "c off >none", "z"}), "z ");
    EXPECT_EQ(db.messages, Messages{});
    EXPECT_EQ(settle({"a >none", "z"}, 2), "z ");
    EXPECT_EQ(db.messages, Messages{"uninstalled a-7.0"});
    EXPECT_EQ(settle({"b !a enable off", "a", "c >a", "z"}), "b [a] [c] z ");
    EXPECT_EQ(db.messages, (Messages{"disabled c-7.0", "disabled a-7.0", "enabled b-7.0"}));
}

TEST_F(StateChangesTest, SettlesConflictsForWhatIsOnItsWayIn) {
    EXPECT_EQ(settle({"a", "b off enable !a"}), "[a] b ");
    EXPECT_EQ(settle({"a !b", "b off enable"}), "[a] b ") << "what was asked for comes in";
    EXPECT_EQ(settle({"a off enable", "b off enable !a"}), "[a] b ");
    EXPECT_EQ(db.messages, (Messages{"WARNING: can not enable a: b-7.0 conflicts with it", "enabled b-7.0"}));
    EXPECT_EQ(settle({"a off enable !b", "b off enable !a"}), "a b ") << "neither gives way";
    EXPECT_EQ(settle({"a off !b", "b"}), "[a] b ");
}

TEST_F(StateChangesTest, BundlesHandDownTheirRequests) {
    EXPECT_EQ(settle({"m @s", "n off @s", "s bundle off disable", "z"}), "[m] [n] [s] z ");
    EXPECT_EQ(settle({"m @s enable", "s bundle uninstall", "z"}), "z ");
    EXPECT_EQ(settle({"m off @s", "n @s", "s bundle off enable", "z"}), "m n s z ");
    EXPECT_EQ(settle({"m @s uninstall", "n @s", "s bundle off disable", "z"}), "[n] [s] z ");
}

TEST_F(StateChangesTest, BundlesFollowTheirMembers) {
    EXPECT_EQ(settle({"m @s uninstall", "n @s uninstall", "s bundle", "z"}), "z ");
    EXPECT_EQ(settle({"m @s uninstall", "n @s", "s bundle", "z"}), "n s z ");
    EXPECT_EQ(settle({"m off @s", "s bundle", "z"}), "[m] z ") << "an active bundle of disabled members goes";
    EXPECT_EQ(settle({"m off @s", "s bundle off", "z"}), "[m] [s] z ");
    EXPECT_EQ(settle({"s bundle", "z"}), "z ");
    EXPECT_EQ(settle({"m off @s enable", "s bundle off"}), "m s ") << "a member needs its bundle";
}

TEST_F(StateChangesTest, RefusesToLeaveNothingActive) {
    EXPECT_EQ(settle({"a uninstall", "b off >a"}), "a [b] ");
    EXPECT_EQ(db.messages, Messages{"ERROR: can not uninstall or disable all packages"});
    EXPECT_FALSE(result);
    EXPECT_TRUE(journal.empty());
    EXPECT_EQ(settle({"a disable"}, 0), "a ");
    EXPECT_EQ(db.messages, Messages{});
}

TEST_F(StateChangesTest, ANeedlessRequestCostsNothing) {
    // "enable" of what is active, as dependency and as member.
    EXPECT_EQ(settle({"a >b", "b enable user"}), "a b ");
    EXPECT_EQ(settle({"m @s enable user", "s bundle", "z"}), "m s z ");
    EXPECT_TRUE(journal.ops().contains("/flash/var/pdb/m/enabled"));
    EXPECT_EQ(settle({"a off disable user", "z"}), "[a] z ");
    EXPECT_EQ(device.read(journal.ops().at("/flash/var/pdb/a/disabled").arg), "user\n");
}

TEST_F(StateChangesTest, StagesWhatItDecides) {
    device.write("/flash/bin/a", "x");
    device.write("/flash/etc/b", "x");
    device.write("/flash/bootimage", "x");
    device.write("/flash/var/pdb/a/image", "x");
    const auto settleFiles = [this] {
        settle({"z"});
        add("a uninstall");
        add("b disable");
        add("c off enable user");
        add("d off enable");
        db.packages[1]->files = {"/bin/a", "/flash/etc/b", "/gone"};
        db.packages[1]->flags = PKG_FLAG_BOOT;
        device.write("/flash/var/pdb/b/enabled", "user\n");
        applySchedule(db, journal, 0);
        std::map<std::string, OpKind> kinds;
        for (const auto& [target, op] : journal.ops()) kinds[target] = op.kind;
        return kinds;
    };
    std::map<std::string, OpKind> expected = {{"/flash/bin/a", OpKind::Delete},
                                              {"/flash/etc/b", OpKind::Delete},
                                              {"/flash/bootimage", OpKind::Delete},
                                              {"/flash/var/pdb/a/", OpKind::Delete},
                                              {"/flash/var/pdb/a/image", OpKind::Delete},
                                              {"/flash/var/pdb/b/disabled", OpKind::Staged},
                                              {"/flash/var/pdb/b/enabled", OpKind::Delete},
                                              {"/flash/var/pdb/c/disabled", OpKind::Delete},
                                              {"/flash/var/pdb/c/enabled", OpKind::Staged},
                                              {"/flash/var/pdb/d/disabled", OpKind::Delete}};
    EXPECT_EQ(settleFiles(), expected);
    EXPECT_EQ(device.read(journal.ops().at("/flash/var/pdb/b/disabled").arg), "auto\n");

    std::filesystem::create_hard_link("/flash/bootimage", "/flash/other");  // in use elsewhere
    expected.erase("/flash/bootimage");
    EXPECT_EQ(settleFiles(), expected);
}

TEST_F(StateChangesTest, EndsOnDamagedRelations) {
    EXPECT_EQ(settle({"s bundle @s off enable", "z"}), "s z ");
    EXPECT_EQ(settle({"a @b off enable", "b bundle @a off", "z"}), "a b z ");
    EXPECT_EQ(settle({"a >a off enable >b", "b >a off"}), "a b ");
    // Two records alike put each other out, and then the first one is kept.
    EXPECT_EQ(settle({"a >b", "b off", "b off"}), "a b [b] ");
}

}  // namespace
