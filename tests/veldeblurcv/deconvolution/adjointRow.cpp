#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"

#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;

using Row = std::vector<float>;

Row randomRow(std::size_t count, std::mt19937& random) {
    std::uniform_real_distribution<float> value(-2.0f, 2.0f);
    Row row(count);
    for (float& element : row) {
        element = value(random);
    }
    return row;
}

TEST(AdjointRow, IsTheSumOfBothTransposedDifferences) {
    std::mt19937 random(2);
    test::forEachTarget([&] {
        for (std::size_t count : {1, 2, 3, 15, 16, 17, 67, 1024}) {
            const Row wx = randomRow(count, random);
            const Row above = randomRow(count, random);
            const Row wy = randomRow(count, random);
            Row adjoint(count + 2, -7.0f);
            adjointRow(wx.data(), above.data(), wy.data(), adjoint.data() + 1, count);
            for (std::size_t c = 0; c < count; ++c) {
                const float horizontal = c > 0 ? wx[c - 1] - wx[c] : 0.0f;
                ASSERT_EQ(adjoint[c + 1], (above[c] - wy[c]) + horizontal);
            }
            EXPECT_EQ(adjoint.front(), -7.0f);
            EXPECT_EQ(adjoint.back(), -7.0f);
        }
    });
}

TEST(AdjointRow, TheFirstRowHasNoVerticalTerm) {
    std::mt19937 random(3);
    test::forEachTarget([&] {
        const Row wx = randomRow(67, random);
        const Row wy(67, std::numeric_limits<float>::infinity());
        Row adjoint(67, -7.0f);
        adjointRow(wx.data(), nullptr, wy.data(), adjoint.data(), adjoint.size());
        EXPECT_EQ(adjoint[0], 0.0f);
        for (std::size_t c = 1; c < adjoint.size(); ++c) {
            ASSERT_EQ(adjoint[c], wx[c - 1] - wx[c]);
        }
    });
}

} // namespace
