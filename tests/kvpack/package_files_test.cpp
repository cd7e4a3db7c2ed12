#include "support/kvpack_fixture.h"
#include "support/package_builder.h"

namespace {

struct PackageFilesTest : KvpackTest {};

TEST_F(PackageFilesTest, AreThoseThatAnInstallWrites) {
    const auto shell = package("shell").file("/bin/sh", "sh", 0104755).file("bin", "", 0040755).file("a", "");
    device.write("/suite.kvp", bundle("suite").member(shell).member(package("theme").file("b", "2")).bytes());
    EXPECT_EQ(kvpack("list /suite.kvp").out,
              "  4755          2  shell/bin/sh\n"
              "   644          0  shell/a\n"
              "   644          1  theme/b\n");
    EXPECT_EQ(kvpack("extract /suite.kvp /out/suite").err, "");
    EXPECT_EQ(device.tree("/out/suite"), (Tree{{"shell/bin/sh", "sh"}, {"shell/a", ""}, {"theme/b", "2"}}));
    EXPECT_EQ(device.mode("/out/suite/shell/bin/sh"), 0755U);

    device.write("/shell.kvp", PackageBuilder(shell).bytes());
    EXPECT_EQ(kvpack("extract /shell.kvp /out/shell").err, "");
    EXPECT_EQ(device.tree("/out/shell"), (Tree{{"a", ""}, {"bin/sh", "sh"}}));
}

TEST_F(PackageFilesTest, AppearWholeOrNotAtAll) {
    device.write("/out/there/mine", "mine");
    const std::string whole = package("a").file("good", "1").file("bad", std::string(9000, 'b')).bytes();
    for (const std::string& bytes :
         {whole.substr(0, 90), whole.substr(0, whole.size() - 1), "no" + whole,
          package("a").file("good", "1").file("x/../../escaped", "2").bytes(),
          package("a").file("good", "1").file("good/below", "2").bytes(), bundle("b").member(package("..")).bytes(),
          bundle("b").member(package("").file("a", "")).bytes()}) {
        device.write("/a.kvp", bytes);
        const auto result = kvpack("extract /a.kvp /out/new");
        EXPECT_EQ(result.code, 1);
        EXPECT_NE(result.err, "");
        EXPECT_EQ(device.tree("/out"), (Tree{{"there/mine", "mine"}})) << result.err;
    }
    device.write("/a.kvp", whole);
    EXPECT_EQ(kvpack("extract /a.kvp /out/there").err,
              "kvpack: /out/there is there already: expected a directory to make\n");
}

}  // namespace
