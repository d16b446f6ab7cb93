#include "velimproclib/veldeblurcv/ShrinkCurve.h"

#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;

/// The clamps and the lookup of the stored polyline, in double and rounded once.
float plainShrink(const StoredShrink& row, float v) {
    if (v != v) {
        return v;
    }
    const float x = std::fmin(std::fmax(v, row.levels[0]), row.levels[row.knots - 1]);
    for (int k = 0; k < row.knots - 1; ++k) {
        if (row.levels[k] <= x && x < row.levels[k + 1]) {
            const double slope = (static_cast<double>(row.values[k + 1]) - row.values[k]) /
                                 (static_cast<double>(row.levels[k + 1]) - row.levels[k]);
            return static_cast<float>((static_cast<double>(x) - row.levels[k]) * slope +
                                      row.values[k]);
        }
    }
    return x;
}

std::int64_t ulpsApart(float a, float b) {
    const auto ordered = [](float x) {
        const auto bits = std::bit_cast<std::int32_t>(x);
        return static_cast<std::int64_t>(bits < 0 ? -(bits & 0x7fffffff) : bits);
    };
    return std::abs(ordered(a) - ordered(b));
}

/// Gradients of every kind: all over the range, near the threshold, knots and their neighbours.
std::vector<float> gradients(const StoredShrink& row) {
    std::vector<float> v;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> wide(-11.0f, 11.0f);
    std::normal_distribution<float> close(0.0f, row.levels[row.knots / 2]);
    for (int i = 0; i < 2000; ++i) {
        v.push_back(wide(random));
        v.push_back(close(random));
    }
    for (int k = 0; k < row.knots; ++k) {
        v.push_back(row.levels[k]);
        v.push_back(std::nextafter(row.levels[k], -20.0f));
        v.push_back(std::nextafter(row.levels[k], 20.0f));
    }
    return v;
}

TEST(ShrinkCurve, IsWithinTwoUnitsOfTheLookupInDouble) {
    for (int level = 0; level < kShrinkLevels; ++level) {
        for (int a = 0; a < kShrinkAlphas; ++a) {
            const StoredShrink row = storedShrink(level, a);
            const std::vector<float> v = gradients(row);
            std::vector<float> w(v.size());
            shrinkRow(ShrinkCurve(row), v.data(), w.data(), v.size());
            for (std::size_t i = 0; i < v.size(); ++i) {
                ASSERT_LE(ulpsApart(w[i], plainShrink(row, v[i])), 2)
                    << "v " << v[i] << " level " << level << " a " << a;
            }
        }
    }
}

TEST(ShrinkCurve, EveryVariantGivesTheSameBitsForEveryLengthAndAlignment) {
    const StoredShrink row = storedShrink(2, 8);
    const ShrinkCurve curve(row);
    std::vector<float> v = gradients(row);
    v[5] = std::numeric_limits<float>::infinity();
    v[9] = -std::numeric_limits<float>::infinity();
    v[13] = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> expected(v.size());
    for (std::size_t i = 0; i < v.size(); ++i) {
        shrinkRow(curve, &v[i], &expected[i], 1);
    }
    test::forEachTarget([&] {
        for (std::size_t count = 0; count <= 67; ++count) {
            const std::size_t start = count % 7;
            std::vector<float> w(count + 2, -77.0f);
            shrinkRow(curve, v.data() + start, w.data() + 1, count);
            EXPECT_EQ(std::memcmp(w.data() + 1, expected.data() + start, count * sizeof(float)), 0);
            EXPECT_EQ(w.front(), -77.0f);
            EXPECT_EQ(w.back(), -77.0f);
        }
        std::vector<float> inPlace = v;
        shrinkRow(curve, inPlace.data(), inPlace.data(), inPlace.size());
        EXPECT_EQ(std::memcmp(inPlace.data(), expected.data(), v.size() * sizeof(float)), 0);
    });
}

TEST(ShrinkCurve, GradientsFromTheLastKnotOnGiveTheLastKnot) {
    const ShrinkCurve curve(storedShrink(0, 5));
    const float v[] = {10.0f, 11.0f, std::numeric_limits<float>::infinity(), -10.0f, -11.0f};
    float w[5];
    shrinkRow(curve, v, w, 5);
    EXPECT_EQ(w[0], 10.0f);
    EXPECT_EQ(w[1], 10.0f);
    EXPECT_EQ(w[2], 10.0f);
    EXPECT_FLOAT_EQ(w[3], -9.84061f);
    EXPECT_EQ(w[4], w[3]);
}

TEST(ShrinkCurve, NotANumberStays) {
    const float v = std::numeric_limits<float>::quiet_NaN();
    float w = 0.0f;
    shrinkRow(ShrinkCurve(storedShrink(0, 5)), &v, &w, 1);
    EXPECT_TRUE(std::isnan(w));
}

} // namespace
