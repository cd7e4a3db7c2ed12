#include <algorithm>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "kvpack/command_line.h"
#include "support/device_root.h"
#include "support/host.h"

namespace {

namespace fs = std::filesystem;

struct Result {
    int code;
    std::string out, err;
};

struct KvpackTest : testing::Test {
    KvpackTest() {
        for (const char* name : {"ed25519", "kcdsa"})
            device.write(std::string("/keys/") + name + ".key",
                         hostFile(std::string(SOURCE_FOLDER "/keys/development/") + name + ".key"));
    }

    static Result kvpack(Lines arguments) {
        arguments.insert(arguments.begin(), "kvpack");
        std::vector<const char*> argv;
        for (const std::string& argument : arguments) argv.push_back(argument.c_str());
        std::ostringstream out;
        std::ostringstream err;
        const int code = runKvpack(static_cast<int>(argv.size()), argv.data(), out, err);
        return {code, out.str(), err.str()};
    }

    /// Builds /out/<name>.kvp with more arguments.
    static Result build(const std::string& name, const Lines& more = {}) {
        Lines arguments = {"build",
                           "--name",
                           name,
                           "--version",
                           "7.2",
                           "--build-time",
                           "1767225600",
                           "--keys",
                           "/keys",
                           "--output",
                           "/out/" + name + ".kvp"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return kvpack(arguments);
    }

    DeviceRoot device;
};

TEST_F(KvpackTest, BuildsWhatTheInstallerTakes) {
    fs::create_directories("/out");
    device.write("/tree/bin/hello", "hello");
    device.write("/tree/etc/deep/conf", std::string(100000, 'c'));
    fs::permissions("/tree/bin/hello", fs::perms(0711));
    device.install(package("other"));
    ASSERT_EQ(
        build("tools", {"--tree", "/tree", "--depends", "other:6.40:8.0", "--depends", "other", "--provides",
                        "shell:::-5", "--conflicts", "x::7.1beta3", "--note", "a note", "--flag", "boot"})
            .err,
        "");
    EXPECT_EQ(device.run({"-"}, device.read("/out/tools.kvp")).code, 0);
    EXPECT_EQ(device.read("/flash/bin/hello"), "hello");
    EXPECT_EQ(device.mode("/flash/bin/hello"), 0711U);
    EXPECT_EQ(device.read("/flash/etc/deep/conf").size(), 100000U);
    EXPECT_EQ(device.read("/flash/var/pdb/tools/version"), "117597696 1767225600\n");
    EXPECT_EQ(device.read("/flash/var/pdb/tools/deps"), "other 103310848 134243840\nother 0 0\n");
    EXPECT_EQ(device.read("/flash/var/pdb/tools/provides"), "shell 0 0 -5\n");
    EXPECT_EQ(device.read("/flash/var/pdb/tools/conflicts"), "x 0 117531139\n");
    EXPECT_EQ(device.read("/flash/UPGRADED"), "");

    device.write("/image", "squashfs");
    ASSERT_EQ(build("m1", {"--image", "/image", "--arch", "", "--sha1", "--short-signature"}).err, "");
    ASSERT_EQ(build("m2").err, "");
    ASSERT_EQ(kvpack({"bundle", "--name", "suite", "--version", "6.48_ab5", "--build-time", "7",
                      "--disabled-member", "m2", "--note", "both", "-o", "/out/suite.kvp", "/out/m1.kvp",
                      "/out/m2.kvp"})
                  .err,
              "");
    const auto suite = device.read("/out/suite.kvp");
    EXPECT_EQ(suite, bundle("suite")
                         .version(0x06300005)
                         .buildTime(7)
                         .note("both")
                         .disabledMember("m2")
                         .member(package("m1")
                                     .version(0x07026600)
                                     .buildTime(1767225600)
                                     .arch("")
                                     .sha1()
                                     .shortSignature()
                                     .image("squashfs"))
                         .member(package("m2").version(0x07026600).buildTime(1767225600))
                         .bytes());
}

TEST_F(KvpackTest, ShowsEveryPart) {
    const auto tools =
        package("tools").version(0x07026600).note("a\nnote").depends("x", 0x07000000).provides("y", -2);
    device.write("/a.kvp", PackageBuilder(tools).ahead(77, "odd").bytes());
    EXPECT_EQ(kvpack({"show", "/a.kvp"}).out,
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
    device.write("/a.kvp", package("a").file("bin/ls", "list", 0100755).file("etc", "", 0040755).bytes());
    EXPECT_NE(kvpack({"show", "/a.kvp"})
                  .out.find("\n            100755          4  bin/ls\n"
                            "             40755          0  etc\n"),
              std::string::npos);
    for (const auto& [bytes, verdict] :
         {std::pair{package("a").badSignature().bytes(), "132  does not hold\n"},
          {package("a").badEd25519().bytes(), "132  holds by EC-KCDSA alone\n"},
          {package("a").shortSignature().bytes(), "68  holds by EC-KCDSA alone\n"},
          {package("a").bytes().substr(0, 100), "does not hold\nthe file ends inside a part\n"},
          {sample("greeter-7.2.kvp", false), "132  holds\n"}}) {
        device.write("/a.kvp", bytes);
        EXPECT_TRUE(kvpack({"show", "/a.kvp"}).out.ends_with(verdict)) << kvpack({"show", "/a.kvp"}).out;
    }
    EXPECT_NE(kvpack({"show", "/a.kvp"}).out.find("magic 6955b900 (no package: an install refuses it)"),
              std::string::npos);
}

TEST_F(KvpackTest, RefusesBadArgumentsInOneLine) {
    struct Case {
        Result result;
        std::string_view named;  // in the message
    };
    for (const auto& [result, named] :
         {Case{kvpack({"build", "--version", "7.2.0"}), "\"7.2.0\""},
          Case{build("seventeen-letters"), "seventeen-letters"}, Case{build("a/b"), "a/b"},
          Case{build("t", {"--depends", "x:y"}), "\"y\""},
          Case{build("t", {"--provides", "x:::high"}), "high"},
          Case{kvpack({"build", "--build-time", "-1"}), "--build-time"},
          Case{build("t", {"--flag", "odd"}), "odd"}, Case{build("t", {"--what"}), "--what"},
          Case{build("t", {"--tree"}), "--tree"}, Case{kvpack({"build"}), "--name"},
          Case{kvpack({}), "subcommand"}}) {
        EXPECT_EQ(result.code, 2) << named;
        EXPECT_NE(result.err.find(named), std::string::npos) << result.err;
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
    }
}

TEST_F(KvpackTest, LeavesNothingHalfMade) {
    fs::create_directories("/out");
    device.write("/tree/file", "x");
    fs::create_symlink("file", "/tree/link");
    const std::string built = package("m").bytes();
    device.write("/sha1.kvp", package("m").sha1().bytes());
    device.write("/sha256.kvp", built);
    device.write("/tail.kvp", package("m").behind(PART_NOTE, "").bytes());
    device.write("/unsigned.kvp", built.substr(0, built.size() - 138));
    device.write("/cut.kvp", built.substr(0, built.size() - 1));
    device.write("/bundle.kvp", bundle("b").bytes());
    device.write("/suite.kvp", package("suite").bytes());
    const auto bundled = [](const Lines& members) {
        Lines arguments = {"bundle",       "--name", "suite", "--version",     "7.2",
                           "--build-time", "7",      "-o",    "/out/tools.kvp"};
        arguments.insert(arguments.end(), members.begin(), members.end());
        return kvpack(arguments);
    };
    device.write("/out/tools.kvp", "earlier");
    struct Case {
        Result result;
        std::string_view named;
    };
    for (const auto& [result, named] :
         {Case{build("tools", {"--tree", "/none"}), "/none"},
          Case{build("tools", {"--tree", "/tree"}), "/tree/link"},
          Case{build("tools", {"--image", "/none"}), "/none"}, Case{bundled({"/none.kvp"}), "/none.kvp"},
          Case{bundled({"/sha256.kvp", "/sha1.kvp"}), "/sha1.kvp"}, Case{bundled({"/tail.kvp"}), "/tail.kvp"},
          Case{bundled({"/unsigned.kvp"}), "/unsigned.kvp"}, Case{bundled({"/cut.kvp"}), "/cut.kvp"},
          Case{bundled({"/bundle.kvp"}), "/bundle.kvp"}, Case{bundled({"/suite.kvp"}), "/suite.kvp"},
          Case{kvpack({"show", "/none"}), "/none"}}) {
        EXPECT_EQ(result.code, 1) << named;
        EXPECT_NE(result.err.find(named), std::string::npos) << result.err;
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
        EXPECT_EQ(device.tree("/out"), (Tree{{"tools.kvp", "earlier"}})) << named;
    }
    fs::remove("/keys/kcdsa.key");
    EXPECT_EQ(build("tools").err, "kvpack: cannot read the key file /keys/kcdsa.key\n");
    device.write("/keys/kcdsa.key", "12");
    EXPECT_EQ(build("tools").err, "kvpack: the key file /keys/kcdsa.key does not hold 64 hex digits\n");
}

}  // namespace
