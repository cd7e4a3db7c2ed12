#include <gtest/gtest.h>

#include "apply/change_journal.h"
#include "support/device_root.h"

namespace {

struct ManifestTest : testing::Test {
    DeviceRoot device;
    ChangeJournal journal;
};

TEST_F(ManifestTest, KeepsTargetsAndArguments) {
    device.write("/flash/old", "");
    std::string temporary;
    {
        ChangeJournal written;
        written.removePath("/flash/old");
        written.addLink("to nowhere", "/flash/link");
        written.addMove("/rw/a b.kvp", "/flash/Z");
        written.stageMarker("/flash/staged");
        temporary = written.ops().at("/flash/staged").arg;
        written.writeManifest("/ram/MANIFEST");
    }
    EXPECT_EQ(device.read("/ram/MANIFEST"),
              "M /flash/Z /rw/a b.kvp\nL /flash/link to nowhere\nU /flash/old\n"
              "M /flash/staged " +
                  temporary + "\n");
    EXPECT_EQ(device.read(temporary), "");  // it belongs to the manifest now
    EXPECT_TRUE(journal.readManifest("/ram/MANIFEST"));
    EXPECT_EQ(journal.ops(), (ChangeJournal::Ops{{"/flash/Z", {OpKind::Move, "/rw/a b.kvp"}},
                                                 {"/flash/link", {OpKind::Link, "to nowhere"}},
                                                 {"/flash/old", {OpKind::Delete, ""}},
                                                 {"/flash/staged", {OpKind::Move, temporary}}}));
}

TEST_F(ManifestTest, IsReadUpToWhereItEnds) {
    struct Case {
        std::string_view text;
        bool result;
        std::size_t ops;
    };
    for (const auto& [text, result, ops] :
         {Case{"", true, 0}, Case{"U /a\n", true, 1}, Case{"U /a", true, 1}, Case{"X /a\nU /b\n", true, 1},
          Case{"X /a", false, 0}, Case{"U /a\nM /b\nU /c\n", false, 1}, Case{"U /a\nL /b\n", false, 1},
          Case{"U\nU /a\n", false, 0}, Case{"U /a\n\nU /b\n", true, 1}, Case{"U /a ignored\n", true, 1}}) {
        ChangeJournal read;
        device.write("/ram/MANIFEST", text);
        EXPECT_EQ(read.readManifest("/ram/MANIFEST"), result) << text;
        EXPECT_EQ(read.ops().size(), ops) << text;
    }
    EXPECT_FALSE(journal.readManifest("/ram/missing"));
}

}  // namespace
