#include "package/part_reader.h"

#include <sstream>

#include <gtest/gtest.h>

#include "package/bytes.h"
#include "support/package_builder.h"

namespace {

/// The digest of a text, as a reader shows it.
template <class Hash>
std::string digestOf(std::string_view message) {
    Hash hash;
    std::vector<std::byte> digest(Hash::DIGEST_SIZE);
    hash.update(std::as_bytes(std::span(message)));
    hash.finish(std::span(digest).template first<Hash::DIGEST_SIZE>());
    return std::string(asText(digest));
}

std::string digestIn(const PartReader& reader) {
    const auto size = reader.usesSha256() ? SHA256::DIGEST_SIZE : SHA1::DIGEST_SIZE;
    return std::string(asText(reader.digest().first(size)));
}

std::string readAll(std::istream& in) { return {std::istreambuf_iterator<char>(in), {}}; }

/// A source that cannot seek, as a pipe.
struct Pipe : std::stringbuf {
    using std::stringbuf::stringbuf;
    pos_type seekoff(off_type /*offset*/, std::ios::seekdir /*from*/, std::ios::openmode /*mode*/) override {
        return off_type(-1);
    }
    pos_type seekpos(pos_type /*position*/, std::ios::openmode /*mode*/) override { return off_type(-1); }
};

/// The four ways in which a reader can pass a package.
struct Passage {
    bool hashing, tee, seekable;
};
constexpr Passage PASSAGES[] = {{false, false, true}, {false, false, false}, {true, false, true}, {true, true, false}};

struct PartReaderTest : testing::TestWithParam<Passage> {
    PartReader& read(const std::string& bytes, std::initializer_list<PartId> wanted) {
        source = GetParam().seekable ? std::make_unique<std::stringbuf>(bytes) : std::make_unique<Pipe>(bytes);
        copy.str("");
        reader = std::make_unique<PartReader>(*source, GetParam().hashing, GetParam().tee ? &copy : nullptr);
        reader->want(wanted);
        return *reader;
    }

    std::unique_ptr<std::stringbuf> source;
    std::stringbuf copy;
    std::unique_ptr<PartReader> reader;
};

INSTANTIATE_TEST_SUITE_P(, PartReaderTest, testing::ValuesIn(PASSAGES), [](const auto& passage) {
    return std::string(passage.param.hashing ? "Hashing" : "Plain") + (passage.param.tee ? "WithTee" : "") +
           (passage.param.seekable ? "FromAFile" : "FromAPipe");
});

TEST_P(PartReaderTest, HandsOutWantedPartsAndSkipsTheRest) {
    const std::string big(50000, 'x');
    const std::string bytes = container({{7777, big}, {23, "note"}, {0xFFFF, "odd"}, {16, ""}, {2, big}, {23, "two"}});
    PartReader& in = read(bytes, {23, 16, 23});
    EXPECT_EQ(in.magic(), PACKAGE_MAGIC);
    EXPECT_EQ(in.packageLength(), bytes.size());
    EXPECT_EQ(in.nextPart(), 23);
    EXPECT_EQ(in.partSize(), 4U);
    EXPECT_EQ(in.partOffset(), bytes.find("note"));
    EXPECT_EQ(in.get(), 'n');  // what is left of a part is skipped
    EXPECT_EQ(in.tellg(), 1);
    EXPECT_EQ(in.nextPart(), 16);
    EXPECT_EQ(in.get(), EOF);  // no read runs into the next part
    EXPECT_EQ(in.nextPart(), PART_END) << "the failure stands";
    in.clear();
    EXPECT_EQ(in.nextPart(), 23);
    EXPECT_EQ(readAll(in), "two");
    EXPECT_EQ(in.nextPart(), PART_END);
    EXPECT_TRUE(in.eof() && in.fail());
    EXPECT_EQ(copy.str(), GetParam().tee ? bytes : "");
}

TEST_P(PartReaderTest, EndsWhereTheStreamIsCut) {
    const std::string bytes = container({{23, "note"}, {2, "text"}});
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        PartReader& in = read(bytes.substr(0, length), {23, 2});
        EXPECT_EQ(in.bad(), length < 8) << length;
        EXPECT_EQ(in.nextPart(), length < 14 ? PART_END : 23) << length;
        if (length < 14) continue;
        EXPECT_EQ(in.nextPart(), length < 24 ? PART_END : 2) << length;
        EXPECT_EQ(readAll(in).size(), length < 24 ? 0 : length - 24) << length;
        EXPECT_EQ(in.nextPart(), PART_END) << length;
    }
    EXPECT_TRUE(read("01234567", {}).bad());
    EXPECT_EQ(reader->magic(), 0x33323130U);
    EXPECT_FALSE(read(container({}, UNRECORDED_MAGIC), {}).bad());
}

TEST_P(PartReaderTest, ReadsFromAPartOf4GiB) {
    std::string bytes = container({{23, "0123456789"}});
    bytes.replace(10, 4, 4, '\xFF');  // the size that the part claims
    PartReader& in = read(bytes, {23});
    in.nextPart();
    std::string piece(4, ' ');
    in.read(piece.data(), 4);
    EXPECT_EQ(piece, "0123");
    EXPECT_EQ(in.partLeft(), 0xFFFFFFFB);
    EXPECT_EQ(readAll(in), "456789");
}

TEST_P(PartReaderTest, SeeksInsideThePart) {
    PartReader& in = read(container({{2, "--"}, {23, "0123456789"}}), {23});
    in.nextPart();
    in.seekg(4);
    EXPECT_EQ(in.get(), '4');
    in.seekg(2, std::ios::cur);
    EXPECT_EQ(in.get(), '7');
    in.seekg(1, std::ios::end);
    EXPECT_EQ(in.get(), '9');
    EXPECT_EQ(in.tellg(), 10);
    in.seekg(11);
    EXPECT_TRUE(in.fail());
    in.clear();
    EXPECT_EQ(in.tellg(), 10);
    in.seekg(3);  // backwards, where nothing has to pass in order
    const bool canGoBack = !GetParam().hashing && GetParam().seekable;
    EXPECT_EQ(in.fail(), !canGoBack);
    in.clear();
    EXPECT_EQ(in.tellg(), canGoBack ? 3 : 10);
}

TEST_P(PartReaderTest, PassesACharacterPutBackOnce) {
    const std::string bytes = container({{1, "abcdef"}, {9, ""}});
    PartReader& in = read(bytes, {1, 9});
    in.nextPart();
    EXPECT_TRUE(in.putback('?').fail());  // nothing was consumed yet
    in.clear();
    EXPECT_EQ(in.get(), 'a');
    EXPECT_EQ(in.get(), 'b');
    in.unget().unget();
    EXPECT_EQ(in.tellg(), 0);
    EXPECT_EQ(in.peek(), 'a');
    EXPECT_EQ(readAll(in), "abcdef");
    in.clear();
    in.nextPart();
    in.finishDigest();
    EXPECT_EQ(digestIn(in), digestOf<SHA1>(GetParam().hashing ? bytes.substr(8) : ""));
    EXPECT_EQ(copy.str(), GetParam().tee ? bytes : "");
}

TEST(PartReaderDigest, ReachesFromTheHeaderOrTheMarkerToTheSignature) {
    struct Case {
        std::string bytes;
        std::size_t start;  // of the message
        bool isSha256;
    };
    const std::string signature(132, 's');
    for (const auto& [bytes, start, isSha256] :
         {Case{container({{18, "bundle"}, {1, "header"}, {4, "files"}, {9, signature}}), 20, false},
          Case{container({{25, ""}, {1, "header"}, {99, "odd"}, {9, signature}}), 14, true},
          Case{container({{1, "header"}, {25, "x"}, {25, ""}, {4, "files"}, {9, signature}}), 20, true}}) {
        std::stringbuf source(bytes);
        std::stringbuf copy;
        PartReader in(source, true, &copy);
        in.want({4, 9});
        while (in.nextPart() == 4) in.ignore(2);
        ASSERT_EQ(in.partId(), 9);
        in.finishDigest();
        const std::string message = bytes.substr(start, bytes.size() - signature.size() - start);
        EXPECT_EQ(in.usesSha256(), isSha256);
        EXPECT_EQ(digestIn(in), isSha256 ? digestOf<SHA256>(message) : digestOf<SHA1>(message));

        // The signature itself is in no digest, but the copy has it.
        std::array<std::byte, 132> raw;
        EXPECT_TRUE(in.takeRaw(raw));
        EXPECT_EQ(asText(raw), signature);
        EXPECT_EQ(in.partLeft(), 0U);
        EXPECT_FALSE(in.takeRaw(raw));
        in.finishDigest();
        EXPECT_EQ(digestIn(in), isSha256 ? digestOf<SHA256>("") : digestOf<SHA1>(""));
        EXPECT_EQ(copy.str(), bytes);
    }
}

}  // namespace
