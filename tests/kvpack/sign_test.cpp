#include <filesystem>

#include "support/kvpack_fixture.h"
#include "support/package_builder.h"

namespace {

namespace fs = std::filesystem;

struct SignTest : KvpackTest {};

TEST_F(SignTest, MakesAFolderOfKeys) {
    ASSERT_EQ(kvpack("keygen /out/k").err, "");
    EXPECT_EQ(device.mode("/out/k/ed25519.key"), 0600U);
    EXPECT_EQ(device.mode("/out/k/kcdsa.key"), 0600U);
    const Tree keys = device.tree("/out/k");
    EXPECT_EQ(keys.size(), 4U);
    EXPECT_EQ(kvpack("keygen /out/k").code, 1);
    EXPECT_EQ(device.tree("/out/k"), keys);
    ASSERT_EQ(kvpack("keygen /out/other").err, "");
    EXPECT_NE(device.read("/out/other/kcdsa.pub"), keys.at("kcdsa.pub"));
}

TEST_F(SignTest, ReplacesEverySignatureAndNothingElse) {
    const auto plain = package("a").file("bin/ls", "list");
    // Of two pairs of keys about one needs the negated scalar.
    for (const std::string folder : {"/out/k1", "/out/k2", "/out/k3", "/out/k4"}) {
        ASSERT_EQ(kvpack("keygen " + folder).err, "");
        for (const PackageBuilder& builder :
             {plain, package("a").shortSignature().sha1().unrecorded(),
              bundle("suite").note("n").member(package("m1").sha1().shortSignature()).member(plain)}) {
            const std::string original = builder.bytes();
            device.write("/a.kvp", original);
            ASSERT_EQ(kvpack("sign /a.kvp -o /b.kvp --keys " + folder).err, "");
            EXPECT_EQ(kvpack("verify /b.kvp --keys " + folder).err, "");
            EXPECT_EQ(kvpack("verify /b.kvp").code, 1);
            EXPECT_EQ(device.read("/a.kvp"), original);
            ASSERT_EQ(kvpack("sign /b.kvp --keys /keys").err, "");
            EXPECT_EQ(device.read("/b.kvp"), original);
        }
    }
}

TEST_F(SignTest, LeavesAloneWhatIsNoSignedPackage) {
    const std::string whole = package("a").bytes();
    for (const std::string& bytes : {whole.substr(0, whole.size() - 1), whole.substr(0, 56), 'x' + whole}) {
        device.write("/a.kvp", bytes);
        EXPECT_EQ(kvpack("sign /a.kvp --keys /keys").code, 1);
        EXPECT_EQ(device.read("/a.kvp"), bytes);
        EXPECT_FALSE(fs::exists("/a.kvp.part"));
    }
}

}  // namespace
