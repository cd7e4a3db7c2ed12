#include <algorithm>
#include <filesystem>

#include <sys/mount.h>

#include "support/host.h"
#include "support/kvpack_fixture.h"
#include "support/package_builder.h"

namespace {

namespace fs = std::filesystem;

TEST_F(KvpackTest, BuildsWhatTheInstallerTakes) {
    device.write("/tree/bin/hello", "hello");
    device.write("/tree/etc/deep/conf", std::string(100000, 'c'));
    fs::permissions("/tree/bin/hello", fs::perms(0711));
    device.install(package("other"));
    const auto built = build("tools",
                             "--tree /tree --depends other:6.40:8.0 --depends other --provides shell:::-5 "
                             "--conflicts x::7.1beta3 --note note --flag boot");
    ASSERT_EQ(built.err, "");
    EXPECT_EQ(device.run({"-"}, device.read("/out/tools.kvp")).code, 0);
    EXPECT_EQ(device.mode("/flash/bin/hello"), 0711U);
    EXPECT_EQ(device.tree("/flash/etc"), (Tree{{"deep/conf", std::string(100000, 'c')}}));
    EXPECT_EQ(device.read("/flash/UPGRADED"), "");
    Tree record = device.tree("/flash/var/pdb/tools");
    record.erase("files");
    EXPECT_EQ(record, (Tree{{"version", "117597696 1767225600\n"},
                            {"deps", "other 103310848 134243840\nother 0 0\n"},
                            {"provides", "shell 0 0 -5\n"},
                            {"conflicts", "x 0 117531139\n"}}));
}

TEST_F(KvpackTest, JoinsSignedPackages) {
    device.write("/image", "squashfs");
    ASSERT_EQ(build("m1", "--image /image --arch '' --sha1 --short-signature").err, "");
    ASSERT_EQ(build("m2").err, "");
    ASSERT_EQ(bundled("--disabled-member m2 --note both /out/m1.kvp /out/m2.kvp").err, "");
    const auto member = [](const char* name) { return package(name).version(0x07026600).buildTime(1767225600); };
    const auto suite = bundle("suite").version(0x06300005).buildTime(7).note("both").disabledMember("m2");
    EXPECT_EQ(device.read("/out/suite.kvp"),
              PackageBuilder(suite)
                  .member(member("m1").arch("").sha1().shortSignature().image("squashfs"))
                  .member(member("m2"))
                  .bytes());
}

TEST_F(KvpackTest, TakesItsOptionsFromADescriptionFile) {
    device.write("/tree/b", "2");
    device.write("/tree/a", "1");
    device.write("/other/a", "1");
    device.write("/other/b", "2");
    device.write("/description",
                 "[build]\nversion = \"7.2\"\nkeys = \"/keys\"\noutput = \"/out/t.kvp\"\nnote = \"a b\"\n"
                 "depends = [\"x:7.0\", \"y\"]\nsha1 = true\ntree = \"/tree\"\nname = \"other\"\n");
    ASSERT_EQ(::setenv("SOURCE_DATE_EPOCH", "1767225600", 1), 0);
    EXPECT_EQ(kvpack("build --description /description --name t").err, "");
    ::unsetenv("SOURCE_DATE_EPOCH");
    const std::string described = device.read("/out/t.kvp");
    ASSERT_EQ(build("t", "--depends x:7.0 --depends y --sha1 --tree /other").err, "");
    EXPECT_NE(device.read("/out/t.kvp"), described) << "the note is missing";
    device.write("/description", "[build]\nnote = \"a b\"\n");
    ASSERT_EQ(build("t", "--depends x:7.0 --depends y --sha1 --tree /other --description /description").err, "");
    EXPECT_EQ(device.read("/out/t.kvp"), described);
}

TEST_F(KvpackTest, LeavesNothingOnAFullDisk) {
    fs::create_directory("/small");
    ASSERT_EQ(::mount("none", "/small", "tmpfs", 0, "size=64k"), 0);
    device.write("/image", std::string(100000, 'i'));
    const std::string content(100000, 'b');
    device.write("/big.kvp", package("big").image(content).file("big", content).bytes());
    for (const std::string command :
         {"build --name t --version 7.2 --build-time 1 --keys /keys --image /image -o /small/t.kvp",
          "sign --keys /keys /big.kvp -o /small/t.kvp", "extract /big.kvp /small/t"}) {
        const auto result = kvpack(command);
        EXPECT_EQ(result.code, 1) << command;
        EXPECT_TRUE(result.err.ends_with("No space left on device\n")) << result.err;
        EXPECT_TRUE(fs::is_empty("/small")) << command;
    }
    ASSERT_EQ(::umount("/small"), 0);
}

TEST_F(KvpackTest, ShowsEveryPart) {
    const auto tools = package("tools").version(0x07026600).note("a\nnote").depends("x", 0x07000000);
    device.write("/a.kvp", PackageBuilder(tools).provides("y", -2).ahead(77, "odd").bytes());
    EXPECT_EQ(kvpack("show /a.kvp").out,
              "magic bad0f11e, 295 bytes by the file header\n"
              "    offset  id  part                  size\n"
              "        14  25  SHA-256 marker           0\n"
              "        20   1  package header          36  tools-7.2, built 1970-01-01 00:16:40 UTC\n"
              "        62  23  note                     6  a.note\n"
              "        74   3  dependencies            34\n"
              "            x from 7.0\n"
              "       114  19  provides                34\n"
              "            y priority -2\n"
              "       154  77  unknown                  3\n"
              "       163   9  signature              132  holds\n");
    const std::string whole = package("a").file("bin/ls", "list", 0100755).file("etc", "", 0040755).bytes();
    for (const auto& [bytes, shown] :
         {std::pair{whole, "\n            100755          4  bin/ls\n             40755          0  etc\n"},
          {package("a").badSignature().bytes(), "132  does not hold\n"},
          {package("a").badEd25519().bytes(), "132  holds by EC-KCDSA alone\n"},
          {package("a").shortSignature().bytes(), "68  holds by EC-KCDSA alone\n"},
          {whole.substr(0, whole.size() - 1), "does not hold\nthe file ends inside a part\n"},
          {sample("greeter-7.2.kvp", false), "magic 6955b900 (no package: an install refuses it)"},
          {sample("greeter-7.2.kvp", false), "132  holds\n"}}) {
        device.write("/a.kvp", bytes);
        const std::string out = kvpack("show /a.kvp").out;
        EXPECT_NE(out.find(shown), std::string::npos) << out;
    }
}

TEST_F(KvpackTest, FailsInOneLineAndLeavesNothingHalfMade) {
    device.write("/tree/file", "x");
    fs::create_symlink("file", "/tree/link");
    const std::string whole = package("m").bytes();
    for (const auto& [name, bytes] : {std::pair{"sha1", package("m").sha1().bytes()},
                                      {"sha256", whole},
                                      {"cut", whole.substr(0, whole.size() - 1)},
                                      {"unsigned", whole.substr(0, whole.size() - 138)},
                                      {"tail", package("m").behind(PART_NOTE, "").bytes()},
                                      {"bundle", bundle("b").bytes()},
                                      {"suite", package("suite").bytes()}})
        device.write(std::string("/") + name + ".kvp", bytes);
    device.write("/short/ed25519.key", "12");
    device.write("/odd", "[build]\nwhat = 1\n");
    device.write("/out/t.kvp", "earlier");
    device.write("/out/suite.kvp", "earlier");
    struct Case {
        int code;
        KvpackResult result;
        std::string_view named;  // in the message
    };
    for (const auto& [code, result, named] :
         {Case{2, kvpack("build --version 7.2.0"), "\"7.2.0\""},
          Case{2, build("seventeen-letters"), "seventeen-letters"},
          Case{2, build("a/b"), "a/b"},
          Case{2, build("t", "--depends x:y"), "\"y\""},
          Case{2, build("t", "--provides x:::high"), "high"},
          Case{2, kvpack("build --build-time -1"), "--build-time"},
          Case{2, build("t", "--flag odd"), "odd"},
          Case{2, build("t", "--what"), "--what"},
          Case{2, build("t", "--tree"), "--tree"},
          Case{2, build("t", "--description /odd"), "build.what"},
          Case{2, build("t", "--description /none"), "/none"},
          Case{2, kvpack("build"), "--name"},
          Case{2, kvpack(""), "subcommand"},
          Case{1, build("t", "--tree /none"), "/none"},
          Case{1, build("t", "--tree /tree"), "/tree/link"},
          Case{1, build("t", "--image /none"), "/none"},
          Case{1, bundled("/none.kvp"), "/none.kvp"},
          Case{1, bundled("/sha256.kvp /sha1.kvp"), "/sha1.kvp"},
          Case{1, bundled("/tail.kvp"), "/tail.kvp"},
          Case{1, bundled("/unsigned.kvp"), "/unsigned.kvp"},
          Case{1, bundled("/cut.kvp"), "/cut.kvp"},
          Case{1, bundled("/bundle.kvp"), "/bundle.kvp"},
          Case{1, bundled("/suite.kvp"), "/suite.kvp"},
          Case{1, kvpack("show /none"), "/none"},
          Case{1, kvpack("build --name t --version 7.2 --build-time 1 -o /out/t.kvp --keys /none"),
               "/none/ed25519.key"},
          Case{1, kvpack("build --name t --version 7.2 --build-time 1 -o /out/t.kvp --keys /short"),
               "64 hex digits"}}) {
        EXPECT_EQ(result.code, code) << named;
        EXPECT_NE(result.err.find(named), std::string::npos) << result.err;
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
        EXPECT_EQ(device.tree("/out"), (Tree{{"suite.kvp", "earlier"}, {"t.kvp", "earlier"}})) << named;
    }
}

}  // namespace
