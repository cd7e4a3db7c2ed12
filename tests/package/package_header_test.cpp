#include "package/package_header.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/package_builder.h"

namespace {

/// A parsed package with all that the parse needs to live.
struct Parsed {
    explicit Parsed(const std::string& bytes) : source(bytes), reader(source, true, nullptr), result(parse()) {}

    bool parse() {
        reader.want({18, 1, 24, 16, 2, 23, 3, 19, 17, 21, 4});
        reader.nextPart();
        return parsePackageHeader(info, reader);
    }

    std::stringbuf source;
    PartReader reader;
    PackageInfo info{""};
    bool result;
};

const std::string HEADER("0123456789abcdef\x05\x00\x30\x06\x01\x02\x00\x00........\x07\0\0\0behind", 42);
const std::string COUNTS[] = {std::string("\0\0", 2), std::string("\1\0", 2), std::string("\2\0", 2)};

std::string entry(std::string name) {
    name.resize(16);
    return name + std::string("\1\0\0\0????\2\0\0\0\xFF\xFF\xFF\xFF", 16);
}

TEST(PackageHeader, TakesEveryPartInOrder) {
    const Parsed parsed(container({{1, HEADER},
                                   {24, "t24"},
                                   {16, ""},
                                   {2, "t2"},
                                   {23, "note"},
                                   {3, COUNTS[2] + entry("one") + entry("two") + "behind"},
                                   {99, "skipped"},
                                   {19, COUNTS[1] + entry("three")},
                                   {17, COUNTS[0]},
                                   {21, "image"}}));
    ASSERT_TRUE(parsed.result);
    const PackageInfo& info = parsed.info;
    EXPECT_FALSE(info.isBundle);
    EXPECT_EQ(info.name, "0123456789abcdef");
    EXPECT_EQ(info.version, 0x06300005U);
    EXPECT_EQ(info.buildTime, 0x201U);
    EXPECT_EQ(info.flags, 7U);
    EXPECT_EQ(info.text24 + '|' + info.arch + '|' + info.text2 + '|' + info.note, "t24||t2|note");
    ASSERT_EQ(info.dependencies.size(), 2U);
    const auto& [name, lowest, highest, priority] = info.dependencies[1];
    EXPECT_EQ(std::tie(name, lowest, highest, priority), std::tuple("two", 1U, 2U, -1));
    EXPECT_EQ(info.provides.size(), 1U);
    EXPECT_EQ(info.conflicts.size(), 0U);
    EXPECT_TRUE(info.hasImage);
    EXPECT_EQ(parsed.reader.partId(), 21);
    EXPECT_EQ(parsed.reader.partLeft(), 5U);
}

TEST(PackageHeader, StopsAtAPartOutOfPlace) {
    const Parsed parsed(container({{18, HEADER}, {3, COUNTS[0]}, {16, "mips"}}));
    EXPECT_TRUE(parsed.result && parsed.info.isBundle);
    EXPECT_EQ(parsed.info.arch, "i386");
    EXPECT_EQ(parsed.reader.partId(), 16);
}

TEST(PackageHeader, HasOptionalFlags) {
    for (std::size_t size = 30; size <= 37; ++size) {
        const Parsed parsed(container({{1, HEADER.substr(0, size)}, {23, "note"}}));
        EXPECT_EQ(parsed.result, size >= 32) << size;
        EXPECT_EQ(parsed.info.flags, size >= 36 ? 7U : 0U) << size;
        EXPECT_EQ(parsed.info.note, size >= 32 ? "note" : "") << size;
    }
}

TEST(PackageHeader, FailsOnlyWhereTheHeaderOrAListIsCut) {
    const std::string whole = container({{1, HEADER.substr(0, 32)}, {23, "note"}, {3, COUNTS[1] + entry("one")}});
    const std::size_t list = whole.size() - 34;
    for (std::size_t length = 46; length < whole.size(); ++length) {
        const Parsed parsed(whole.substr(0, length));
        EXPECT_EQ(parsed.result, length < list) << length;
        EXPECT_EQ(parsed.reader.partId(), length < list ? PART_END : 3) << length;
    }
    const Parsed promising(container({{1, HEADER}, {3, COUNTS[2] + entry("one")}}));
    EXPECT_FALSE(promising.result);
    EXPECT_EQ(promising.info.dependencies.size(), 1U);  // what came stays
    for (const PartId id : {PART_DEPENDENCIES, PART_PROVIDES, PART_CONFLICTS})
        EXPECT_FALSE(Parsed(container({{1, HEADER}, {id, "\1"}})).result) << id;
}

TEST(PackageHeader, BoundsItsTexts) {
    for (const std::uint32_t size : {MAX_TEXT_SIZE, MAX_TEXT_SIZE + 1, 0xFFFFFFFFU}) {
        // The payload ends before the claim, and no memory may be taken for one that is too large.
        std::string bytes = container({{1, HEADER}, {23, "x"}});
        for (std::size_t i = 0; i < 4; ++i) bytes[bytes.size() - 5 + i] = static_cast<char>(size >> (8 * i));
        const Parsed parsed(bytes);
        EXPECT_EQ(parsed.result, size <= MAX_TEXT_SIZE) << size;
        EXPECT_EQ(parsed.info.note.size(), size <= MAX_TEXT_SIZE ? size : 0) << size;
    }
    for (const PartId id : {PART_TEXT24, PART_ARCHITECTURE, PART_TEXT2})
        EXPECT_FALSE(Parsed(container({{1, HEADER}, {id, std::string(MAX_TEXT_SIZE + 1, 'x')}})).result) << id;
}

TEST(DependencyText, NamesTheLowerBound) {
    EXPECT_EQ(dependencyText({.name = "a", .minVersion = 0, .maxVersion = 5}), "a");
    EXPECT_EQ(dependencyText({.name = "a", .minVersion = 0x07016203}), "a-7.1beta3");
}

}  // namespace
