#include "package/double_scalar.h"

#include <gtest/gtest.h>

#include "package/trusted_keys.h"
#include "support/vectors.h"

namespace {

TEST(DoubleScalar, GivesTheXOfTheSumOfBothMultiples) {
    const auto rows = vectors("double_scalar");
    EXPECT_EQ(rows.size(), 14U);
    for (const auto& row : rows)
        EXPECT_EQ(doubleScalarX(kcdsaPublicKey, arrayFromHex<32>(row[0]), arrayFromHex<32>(row[1])),
                  arrayFromHex<32>(row[2]))
            << row[0] << ' ' << row[1];
}

}  // namespace
