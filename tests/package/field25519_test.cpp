#include "package/field25519.h"

#include <gtest/gtest.h>

namespace {

/// 32 bytes: `low`, then `middle` thirty times, then `high`.
std::array<std::byte, 32> bytes(unsigned low, unsigned middle, unsigned high) {
    std::array<std::byte, 32> all;
    all.fill(static_cast<std::byte>(middle));
    all.front() = static_cast<std::byte>(low);
    all.back() = static_cast<std::byte>(high);
    return all;
}

const auto ONE = fieldFromSmall(1);

/// The element of these bytes, carried.
FieldElement carried(const std::array<std::byte, 32>& value) { return fieldTimesSmall(fieldFromBytes(value), 1); }

TEST(Field25519, ReducesAroundItsPrime) {
    struct Case {
        std::array<std::byte, 32> value;
        std::array<std::byte, 32> reduced;
        bool isOdd;
    };
    for (const auto& [value, reduced, isOdd] : {Case{bytes(0xEC, 0xFF, 0x7F), bytes(0xEC, 0xFF, 0x7F), false},  // p - 1
                                                Case{bytes(0xED, 0xFF, 0x7F), bytes(0, 0, 0), false},           // p
                                                Case{bytes(0xEE, 0xFF, 0x7F), bytes(1, 0, 0), true},            // p + 1
                                                Case{bytes(0xFF, 0xFF, 0x7F), bytes(18, 0, 0), false},  // 2^255 - 1
                                                Case{bytes(0xED, 0xFE, 0x7F), bytes(0xED, 0xFE, 0x7F), true}}) {
        EXPECT_EQ(fieldPack(carried(value)), reduced) << std::to_integer<int>(value[0]);
        EXPECT_EQ(fieldIsOdd(carried(value)), isOdd) << std::to_integer<int>(value[0]);
    }
    const FieldElement negative = fieldTimesSmall(FieldElement{} - ONE, 1);
    EXPECT_EQ(fieldPack(negative), bytes(0xEC, 0xFF, 0x7F));
    EXPECT_FALSE(fieldIsOdd(negative));
}

TEST(Field25519, InvertsWhatItMultiplies) {
    for (const unsigned low : {1U, 2U, 0x5AU, 0xECU}) {
        const FieldElement a = carried(bytes(low, 0xC3, 0x7F));
        EXPECT_EQ(fieldPack(a * fieldPow(a, FieldPower::Reciprocal)), bytes(1, 0, 0)) << low;
        EXPECT_EQ(fieldPack(fieldSquare(a)), fieldPack(a * a)) << low;
    }
    EXPECT_EQ(fieldPack(fieldPow(FieldElement{}, FieldPower::Reciprocal)), bytes(0, 0, 0));
}

}  // namespace
