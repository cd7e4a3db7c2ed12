#include <nlohmann/json.hpp>

#include "support/host.h"
#include "support/kvpack_fixture.h"
#include "support/package_builder.h"

namespace {

using Json = nlohmann::json;

constexpr PackageVersion V8 = 0x08006600;

struct VerifyTest : KvpackTest {
    KvpackResult verify(const std::string& bytes, const std::string& more = "") {
        device.write("/a.kvp", bytes);
        return kvpack("verify /a.kvp " + more);
    }
};

TEST_F(VerifyTest, TellsOfEveryByteWhetherASignatureCoversIt) {
    EXPECT_EQ(verify(package("a").version(V8).note("n").bytes()).out,
              "    offset       bytes  coverage     what\n"
              "         0           8  not covered  file header\n"
              "         8           6  not covered  SHA-256 marker\n"
              "        14          42  signed       package header\n"
              "        56           7  signed       note\n"
              "        63           6  signed       signature: part header\n"
              "        69          20  not covered  signature: unused bytes\n"
              "        89          48  not covered  signature: EC-KCDSA, not relied on\n"
              "       137          64  signature    signature: Ed25519\n"
              "a-8.0: the signature holds by Ed25519, over a SHA-256 digest\n");
}

TEST_F(VerifyTest, AgreesWithTheInstallerOnEachRange) {
    const auto member = package("member").file("bin/ls", "x");
    for (const std::string& bytes :
         {package("a").file("bin/ls", "x").behind(PART_ARCHITECTURE, "odd").bytes(), package("b").sha1().bytes(),
          package("c").signatureSize(140).version(V8).bytes(), package("d").shortSignature().bytes(),
          package("e").badEd25519().bytes(), bundle("suite").note("n").member(member).bytes()}) {
        const auto report = verify(bytes, "--json");
        ASSERT_EQ(report.err, "");
        const Json ranges = Json::parse(report.out)["ranges"];
        std::size_t end = 0;
        for (const Json& range : ranges) {
            ASSERT_EQ(range["offset"], end) << "a gap in the report";
            end += range["size"].get<std::size_t>();
            std::string changed = bytes;
            changed[end - 1] = static_cast<char>(changed[end - 1] ^ 0x10);
            if (range["coverage"] != "not covered") {
                EXPECT_NE(device.run({"-"}, changed).code, 0) << range;
                EXPECT_EQ(verify(changed).code, 1) << range;
            } else if (range["what"].get<std::string>().starts_with("signature: ")) {
                EXPECT_EQ(verify(changed).code, 0) << range;
            }
        }
        EXPECT_EQ(end, bytes.size());
        EXPECT_EQ(device.run({"-"}, bytes).code, 0);
    }
}

TEST_F(VerifyTest, NamesTheFirstFaultAndItsPlace) {
    const std::string whole = package("a").file("bin/ls", "list").bytes();
    const auto with = [&whole](std::size_t offset, char byte) {
        return std::string(whole).replace(offset, 1, 1, byte);
    };
    const auto member = package("member");
    struct Case {
        std::string bytes;
        std::string_view fault;
    };
    for (const auto& [bytes, fault] :
         {Case{with(0, 0), "byte 0: the magic is none of a package"},
          {whole + "tail", "byte 4: the file header tells of 227 bytes, and the file has 231"},
          {with(20, '/'), "byte 20: the name is none that a package can have"},
          {with(62, '\x79'), "byte 62: the compressed file records are damaged or cut off"},
          {package("a").rawFiles("short").bytes(), "byte 62: a file record is cut off"},
          {package("a").file("../x", "").bytes(), "byte 62: the file name \"../x\" is none that a file of the tree"},
          {package("a").ahead(PART_DEPENDENCIES, "\1").bytes(), "byte 62: the list is cut off"},
          {package("a").ahead(PART_PROVIDES, std::string(3, '\0')).bytes(), "byte 62: the list has more bytes"},
          {package("a").note("n").ahead(PART_TEXT24, "").bytes(), "byte 63: the part text 24 has no place here"},
          {package("a").ahead(PART_PACKAGE_HEADER, "").bytes(), "byte 56: a package header follows before"},
          {package("a").ahead(PART_BUNDLE_HEADER, "").bytes(), "byte 56: a bundle header stands behind"},
          {package("a").markerBehindHeader().bytes(), "byte 50: the SHA-256 marker stands behind the package header"},
          {package("a").badSignature().bytes(), "byte 62: the signature does not hold"},
          {package("a").signatureSize(67).bytes(), "byte 62: the signature is shorter than 68 bytes"},
          {package("a").version(V8).badEd25519().bytes(), "byte 62: the signature holds by EC-KCDSA alone, and"},
          {package("a").behind(PART_NOTE, "").bytes(), "byte 194: the part note stands behind the signature"},
          {package("a").behind(PART_PACKAGE_HEADER, "").bytes(), "byte 194: a second package follows"},
          {bundle("a").bytes(), "byte 50: the bundle has no members"},
          {bundle("member").member(member).bytes(), "byte 62: the member has the name of the bundle"},
          {bundle("a").depends("x").member(member).bytes(), "byte 50: the part dependencies has no place here"}}) {
        const auto result = verify(bytes);
        EXPECT_EQ(result.code, 1) << fault;
        EXPECT_TRUE(result.err.starts_with("kvpack: /a.kvp: " + std::string(fault))) << result.err << fault;
    }
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(verify(whole.substr(0, length)).code, 1) << length;
}

}  // namespace
