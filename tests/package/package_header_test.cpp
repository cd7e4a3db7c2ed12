#include "package/package_header.h"

#include <sstream>

#include <gtest/gtest.h>

#include "kvpack/package_writer.h"

namespace {

/// A parsed package with all that the parse needs to live.
struct Parsed {
    explicit Parsed(const std::string& bytes) : source(bytes), reader(source, true, nullptr) {
        reader.want({18, 1, 24, 16, 2, 23, 3, 19, 17, 21, 4});
        reader.nextPart();
        result = parsePackageHeader(info, reader);
    }

    std::stringbuf source;
    PartReader reader;
    PackageInfo info{""};
    bool result;
};

const std::string NAME_AND_REST("0123456789abcdef\x05\x00\x30\x06\x01\x02\x00\x00........", 32);

std::string entry(std::string name) {
    name.resize(16);
    return name + std::string("\1\0\0\0????\2\0\0\0\xFF\xFF\xFF\xFF", 16);
}

struct HeaderTest : testing::Test {
    void part(PartId id, const std::string& payload) { writer.part(id, payload); }
    std::string bytes() {
        writer.finish();
        return out.str();
    }

    std::stringstream out;
    PackageWriter writer{out};
};

TEST_F(HeaderTest, TakesEveryPartInOrder) {
    part(1, NAME_AND_REST + std::string("\x07\0\0\0behind", 10));
    part(24, "t24");
    part(16, "");
    part(2, "t2");
    part(23, "note");
    part(3, std::string("\2\0", 2) + entry("one") + entry("two") + "behind");
    part(99, "skipped");
    part(19, std::string("\1\0", 2) + entry("three"));
    part(17, std::string("\0\0", 2));
    part(21, "image");
    const Parsed parsed(bytes());
    ASSERT_TRUE(parsed.result);
    EXPECT_FALSE(parsed.info.isBundle);
    EXPECT_EQ(parsed.info.name, "0123456789abcdef");
    EXPECT_EQ(parsed.info.version, 0x06300005U);
    EXPECT_EQ(parsed.info.buildTime, 0x201U);
    EXPECT_EQ(parsed.info.flags, 7U);
    EXPECT_EQ(parsed.info.text24 + '|' + parsed.info.arch + '|' + parsed.info.text2 + '|' + parsed.info.note,
              "t24||t2|note");
    ASSERT_EQ(parsed.info.dependencies.size(), 2U);
    EXPECT_EQ(parsed.info.dependencies[1].name, "two");
    EXPECT_EQ(parsed.info.dependencies[1].minVersion, 1U);
    EXPECT_EQ(parsed.info.dependencies[1].maxVersion, 2U);
    EXPECT_EQ(parsed.info.dependencies[1].priority, -1);
    EXPECT_EQ(parsed.info.provides.size(), 1U);
    EXPECT_EQ(parsed.info.conflicts.size(), 0U);
    EXPECT_TRUE(parsed.info.hasImage);
    EXPECT_EQ(parsed.reader.partId(), 21);
    EXPECT_EQ(parsed.reader.partLeft(), 5U);
}

TEST_F(HeaderTest, StopsAtAPartOutOfPlace) {
    part(18, NAME_AND_REST);
    part(3, std::string("\0\0", 2));
    part(16, "mips");
    const Parsed parsed(bytes());
    EXPECT_TRUE(parsed.result);
    EXPECT_TRUE(parsed.info.isBundle);
    EXPECT_EQ(parsed.info.arch, "i386");
    EXPECT_EQ(parsed.reader.partId(), 16);
}

TEST(PackageHeader, HasOptionalFlags) {
    for (std::size_t size = 30; size <= 37; ++size) {
        std::stringstream out;
        PackageWriter writer(out);
        writer.part(1, (NAME_AND_REST + std::string("\1\0\0\0\0", 5)).substr(0, size));
        writer.part(23, "note");
        writer.finish();
        const Parsed parsed(out.str());
        EXPECT_EQ(parsed.result, size >= 32) << size;
        EXPECT_EQ(parsed.info.flags, size >= 36 ? 1U : 0U) << size;
        EXPECT_EQ(parsed.info.note, size >= 32 ? "note" : "") << size;
    }
}

TEST_F(HeaderTest, FailsOnlyWhereAListIsCut) {
    part(1, NAME_AND_REST);
    part(23, "note");
    part(3, std::string("\1\0", 2) + entry("one"));
    const std::string whole = bytes();
    const std::size_t list = whole.size() - 34;
    for (std::size_t length = 8; length < whole.size(); ++length) {
        const Parsed parsed(whole.substr(0, length));
        const bool isInHeader = length < 8 + 6 + 32;
        EXPECT_EQ(parsed.result, !isInHeader && length < list) << length;
        if (!isInHeader && length < list) {
            EXPECT_EQ(parsed.reader.partId(), PART_END) << length;
        }
    }
}

TEST_F(HeaderTest, KeepsTheEntriesAheadOfACut) {
    part(1, NAME_AND_REST);
    part(3, std::string("\3\0", 2) + entry("one") + entry("two"));
    const Parsed parsed(bytes());
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.info.dependencies.size(), 2U);
}

TEST_F(HeaderTest, BoundsItsTexts) {
    for (const std::uint32_t size : {MAX_TEXT_SIZE, MAX_TEXT_SIZE + 1, 0xFFFFFFFFU}) {
        // The payload ends before the claim, and nothing may be taken for the claim.
        std::stringstream claim;
        PackageWriter claimant(claim);
        claimant.part(1, NAME_AND_REST);
        claimant.beginPart(23);
        claimant.write("x");
        std::string bytes = claim.str();
        for (std::size_t i = 0; i < 4; ++i) bytes[bytes.size() - 5 + i] = static_cast<char>(size >> (8 * i));
        const Parsed parsed(bytes);
        EXPECT_EQ(parsed.result, size <= MAX_TEXT_SIZE) << size;
        EXPECT_EQ(parsed.info.note.size(), size <= MAX_TEXT_SIZE ? size : 0) << size;
    }
}

TEST(DependencyText, NamesTheLowerBound) {
    EXPECT_EQ(dependencyText({.name = "a", .minVersion = 0, .maxVersion = 5}), "a");
    EXPECT_EQ(dependencyText({.name = "a", .minVersion = 0x07016203}), "a-7.1beta3");
}

}  // namespace
