#include "hosts/command/arguments/Numbers.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using velorn::numberList;
using velorn::numberText;
using Numbers = std::vector<float>;

TEST(Numbers, TextIsTheShortestThatReadsBack) {
    EXPECT_EQ(numberText(0.85f), "0.85");
    EXPECT_EQ(numberText(1e6f), "1000000");
    EXPECT_EQ(numberText(-0.5f), "-0.5");
    for (const float value : {0.00001f, 1.0f / 3.0f, 3.4e38f, 1e-30f}) {
        EXPECT_EQ(numberList(numberText(value)), Numbers{value});
    }
}

TEST(Numbers, ListHasSingleCommasBetweenItsNumbers) {
    EXPECT_EQ(numberList("2"), Numbers({2.0f}));
    EXPECT_EQ(numberList("2,-.5,1e2"), Numbers({2.0f, -0.5f, 100.0f}));
    for (const char* text :
         {"", ",", "1,", ",1", "1,,2", "1, 2", "1 ", "2.png", "two", "1;2", "--limit"}) {
        EXPECT_EQ(numberList(text), Numbers()) << text;
    }
}

TEST(Numbers, NanAndInfinityAreNumbers) {
    const Numbers numbers = numberList("nan,inf");
    ASSERT_EQ(numbers.size(), 2u);
    EXPECT_TRUE(std::isnan(numbers[0]));
    EXPECT_EQ(numbers[1], std::numeric_limits<float>::infinity());
}

} // namespace
