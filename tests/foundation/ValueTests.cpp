#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "zentavo/foundation/Value.h"

namespace {

using namespace zentavo;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

TEST(Value, ExactInt64TakesIntegersOnly) {
    const std::pair<Value, std::int64_t> integers[] = {
        {12, 12},
        {12.0, 12},
        {-0.0, 0},
        {largest, largest},
        {smallest, smallest},
        {-0x1p63, smallest},
        {0x1p53, 1LL << 53},
    };
    for (const auto& [value, integer] : integers) {
        EXPECT_EQ(value.exactInt64(), integer);
    }
    const double nan = std::nan("");
    for (const Value& other : {Value(12.5), Value(true), Value("12"), Value(0x1p63), Value(-0x1.0000000000001p63),
                               Value(nan), Value(HUGE_VAL), Value(nullptr), Value(List{12})}) {
        EXPECT_EQ(other.exactInt64(), std::nullopt) << other.kindName();
    }
}

TEST(Value, NumbersAreEqualByValueNotByKind) {
    EXPECT_EQ(Value(12), Value(12.0));
    EXPECT_EQ(Value(12.0), Value(12));
    EXPECT_EQ(Value(smallest), Value(-0x1p63));
    EXPECT_FALSE(Value((1LL << 53) + 1) == Value(0x1p53)) << "equal only after rounding";
    EXPECT_FALSE(Value(largest) == Value(0x1p63)) << "equal only after rounding";
    EXPECT_FALSE(Value(1) == Value(true));
    EXPECT_FALSE(Value(0) == Value(nullptr));
    EXPECT_FALSE(Value("1") == Value(1));
    EXPECT_EQ(Value(List{1, Map{{"a", 2}}}), Value(List{1.0, Map{{"a", 2.0}}}));
}

TEST(Value, UnsignedBeyondTheSignedRangeBecomesTheNearestDouble) {
    const Value value(std::numeric_limits<std::uint64_t>::max());
    ASSERT_NE(value.asDouble(), nullptr);
    EXPECT_EQ(*value.asDouble(), 0x1p64);
    EXPECT_NE(Value(static_cast<std::uint64_t>(largest)).asInteger(), nullptr);
}

} // namespace
