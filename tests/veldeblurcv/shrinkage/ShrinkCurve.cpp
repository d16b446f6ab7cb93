#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"

#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace vel;

/// Clamp and lookup of the stored polyline in double, rounded once.
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

/// Gradients of all kinds: over the whole range, near the threshold, knots and their neighbours.
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

/// Two rows whose differences are the gradients, up to rounding.
struct Sources {
    std::vector<float> minuend;
    std::vector<float> subtrahend;

    std::size_t size() const { return minuend.size(); }
    float difference(std::size_t i) const { return minuend[i] - subtrahend[i]; }
};

/// The gradients minus zero, then the gradients as differences of two pixels.
Sources sourcesOf(const std::vector<float>& v) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> pixel(0.0f, 1.0f);
    Sources sources{v, std::vector<float>(v.size(), 0.0f)};
    for (const float gradient : v) {
        const float level = pixel(random);
        sources.minuend.push_back(level + gradient);
        sources.subtrahend.push_back(level);
    }
    return sources;
}

/// The result of `shrinkDifferenceRow` for `sources`.
std::vector<float> shrunk(const StoredShrink& row, const Sources& sources) {
    std::vector<float> w(sources.size());
    shrinkDifferenceRow(ShrinkCurve(row), sources.minuend.data(), sources.subtrahend.data(),
                        w.data(), w.size());
    return w;
}

float shrunk(const StoredShrink& row, float v) {
    return shrunk(row, Sources{{v}, {0.0f}}).front();
}

/// Calls check(row, level, alpha index) for all 66 polylines.
template <class Check>
void forEachRow(Check&& check) {
    for (int level = 0; level < kShrinkLevels; ++level) {
        for (int a = 0; a < kShrinkAlphas; ++a) {
            SCOPED_TRACE(testing::Message() << "level " << level << " alpha index " << a);
            check(storedShrink(level, a));
        }
    }
}

bool sameFloats(const float* a, const float* b, std::size_t count) {
    return count == 0 || std::memcmp(a, b, count * sizeof(float)) == 0;
}

TEST(ShrinkCurve, IsWithinTwoUnitsOfTheLookupInDoubleOnEveryVariant) {
    forEachRow([](const StoredShrink& row) {
        const Sources sources = sourcesOf(gradients(row));
        const std::vector<float> best = shrunk(row, sources);
        for (std::size_t i = 0; i < best.size(); ++i) {
            const float v = sources.difference(i);
            ASSERT_LE(ulpsApart(best[i], plainShrink(row, v)), 2) << "v " << v;
        }
        test::forEachTarget([&] {
            EXPECT_TRUE(sameFloats(shrunk(row, sources).data(), best.data(), best.size()));
        });
    });
}

TEST(ShrinkCurve, EveryLengthAndOffsetGivesTheSameBitsAndWritesOnlyTheTarget) {
    forEachRow([](const StoredShrink& row) {
        const ShrinkCurve curve(row);
        std::vector<float> v = gradients(row);
        v.erase(v.begin(), v.end() - 90); // among them the knots
        v[5] = std::numeric_limits<float>::infinity();
        v[9] = -std::numeric_limits<float>::infinity();
        v[13] = std::numeric_limits<float>::quiet_NaN();
        const Sources sources = sourcesOf(v);
        std::vector<float> expected(sources.size());
        for (std::size_t i = 0; i < sources.size(); ++i) {
            shrinkDifferenceRow(curve, &sources.minuend[i], &sources.subtrahend[i], &expected[i],
                                1);
        }
        test::forEachTarget([&] {
            for (const std::size_t count :
                 {0u, 1u, 2u, 3u, 7u, 8u, 15u, 16u, 17u, 33u, 67u, 170u}) {
                for (const std::size_t offset : {0u, 1u, 2u}) {
                    constexpr float kCanary = -77.0f;
                    std::vector<float> w(count + 4, kCanary);
                    shrinkDifferenceRow(curve, sources.minuend.data() + offset,
                                        sources.subtrahend.data() + offset, w.data() + offset,
                                        count);
                    EXPECT_TRUE(sameFloats(w.data() + offset, expected.data() + offset, count));
                    EXPECT_EQ(std::count(w.begin(), w.begin() + static_cast<int>(offset), kCanary),
                              static_cast<int>(offset));
                    EXPECT_EQ(
                        std::count(w.begin() + static_cast<int>(offset + count), w.end(), kCanary),
                        static_cast<int>(4 - offset));
                }
            }
        });
    });
}

TEST(ShrinkCurve, SourcesMayOverlap) {
    const StoredShrink row = storedShrink(2, 8);
    const std::vector<float> pixels = gradients(row);
    const std::size_t count = pixels.size() - 1;
    std::vector<float> w(count);
    shrinkDifferenceRow(ShrinkCurve(row), pixels.data() + 1, pixels.data(), w.data(), count);
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_EQ(w[i], shrunk(row, pixels[i + 1] - pixels[i]));
    }
}

TEST(ShrinkCurve, ZeroStaysZeroAtEveryLevelAndAlpha) {
    forEachRow([](const StoredShrink& row) {
        for (const float level : {0.0f, 0.3f, -9.0f}) {
            EXPECT_EQ(shrunk(row, Sources{{level}, {level}}).front(), 0.0f);
        }
        EXPECT_EQ(shrunk(row, -0.0f), 0.0f);
    });
}

TEST(ShrinkCurve, GradientsFromTheLastKnotUpwardsGiveTheLastKnot) {
    const StoredShrink row = storedShrink(0, 5);
    EXPECT_EQ(shrunk(row, 10.0f), 10.0f);
    EXPECT_EQ(shrunk(row, 11.0f), 10.0f);
    EXPECT_EQ(shrunk(row, std::numeric_limits<float>::infinity()), 10.0f);
    EXPECT_FLOAT_EQ(shrunk(row, -10.0f), -9.84061f);
    EXPECT_EQ(shrunk(row, -11.0f), shrunk(row, -10.0f));
}

TEST(ShrinkCurve, NaNStaysNaN) {
    EXPECT_TRUE(std::isnan(shrunk(storedShrink(0, 5), std::numeric_limits<float>::quiet_NaN())));
}

} // namespace
