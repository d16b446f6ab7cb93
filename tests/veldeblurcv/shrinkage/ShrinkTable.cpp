#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace vel;

const double kRate = std::sqrt(2.0) + std::sqrt(2.0);

double betaOfLevel(int level) {
    double beta = 1.0;
    for (int i = 0; i < level; ++i) {
        beta *= kRate;
    }
    return beta;
}

/// The minimum by a method of its own: bisection finds where the derivative of the cost changes its
/// sign, and the cost decides between that point and 0.
double exactShrink(double v, double alpha, double beta) {
    const double magnitude = std::abs(v);
    if (alpha == 1) {
        return std::copysign(std::max(magnitude - 1 / beta, 0.0), v);
    }
    double low = std::pow(alpha * (1 - alpha) / beta, 1 / (2 - alpha));
    double high = magnitude;
    if (low >= high) {
        return 0;
    }
    const auto derivative = [&](double w) {
        return alpha * std::pow(w, alpha - 1) + beta * (w - magnitude);
    };
    if (derivative(low) > 0) {
        return 0;
    }
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        (derivative(middle) > 0 ? high : low) = middle;
    }
    const double w = 0.5 * (low + high);
    const double cost = std::pow(w, alpha) + 0.5 * beta * (w - magnitude) * (w - magnitude);
    return cost < 0.5 * beta * magnitude * magnitude ? std::copysign(w, v) : 0.0;
}

double polyline(const StoredShrink& row, double v) {
    int k = 0;
    while (k < row.knots - 2 && v >= row.levels[k + 1]) {
        ++k;
    }
    const double slope = (static_cast<double>(row.values[k + 1]) - row.values[k]) /
                         (static_cast<double>(row.levels[k + 1]) - row.levels[k]);
    return (v - row.levels[k]) * slope + row.values[k];
}

/// The largest error on a grid over -10..10, dense near zero, without the two jumps.
double largestError(const StoredShrink& row, double alpha, double beta) {
    const int inner = row.knots / 2;
    const double jumpFrom = row.levels[inner];
    const double jumpTo = alpha < 1 ? static_cast<double>(row.levels[inner + 1]) : jumpFrom;
    double largest = 0;
    const auto look = [&](double v) {
        if (std::abs(v) > jumpFrom * (1 - 1e-6) && std::abs(v) < jumpTo * (1 + 1e-6)) {
            return; // the threshold may coincide with a knot of its pair
        }
        largest = std::max(largest, std::abs(polyline(row, v) - exactShrink(v, alpha, beta)));
    };
    for (int i = -1000; i <= 1000; ++i) {
        look(i / 100.0);
        look(i / 1000.0);
        look(i * 1.5 * jumpFrom / 1000.0);
    }
    return largest;
}

template <class Check>
void forEachStoredRow(Check&& check) {
    for (int level = 0; level < kShrinkLevels; ++level) {
        for (int a = 0; a < kShrinkAlphas; ++a) {
            SCOPED_TRACE(testing::Message() << "level " << level << ", alpha " << a / 10.0);
            check(level, a, storedShrink(level, a));
        }
    }
}

void expectRow(int level, int a, const std::vector<float>& levels,
               const std::vector<float>& values) {
    SCOPED_TRACE(testing::Message() << "level " << level << ", alpha " << a / 10.0);
    const StoredShrink row = storedShrink(level, a);
    ASSERT_EQ(static_cast<int>(levels.size()), row.knots);
    for (int k = 0; k < row.knots; ++k) {
        EXPECT_EQ(row.levels[k], levels[static_cast<std::size_t>(k)]) << "knot " << k;
        EXPECT_EQ(row.values[k], values[static_cast<std::size_t>(k)]) << "knot " << k;
    }
}

TEST(ShrinkTable, HardAndSoftThresholdOfTheFirstLevelHaveTheDefinedKnots) {
    expectRow(0, 0, {-10.0f, -1.4143f, -1.4142f, 1.4142f, 1.4143f, 10.0f},
              {-10.0f, -1.4143f, 0.0f, 0.0f, 1.4143f, 10.0f});
    expectRow(0, 10, {-10.0f, -5.5f, -1.0f, 1.0f, 5.5f, 10.0f},
              {-9.0f, -4.5f, 0.0f, 0.0f, 4.5f, 9.0f});
}

TEST(ShrinkTable, RowsOfTheEstimatorsAlphaHaveTheDefinedKnots) {
    expectRow(0, 5,
              {-10.0f, -2.2374f, -1.7233f, -1.5306f, -1.5001f, -1.5f, 1.5f, 1.5001f, 1.6601f,
               2.0427f, 4.1799f, 10.0f},
              {-9.84061f, -1.87195f, -1.28164f, -1.04041f, -1.00013f, 0.0f, 0.0f, 1.00013f,
               1.20452f, 1.65391f, 3.92761f, 9.84061f});
    expectRow(1, 5,
              {-10.0f, -1.145f, -0.8693f, -0.7688f, -0.7501f, -0.75f, 0.75f, 0.7501f, 0.8302f,
               1.0218f, 2.0954f, 10.0f},
              {-9.94394f, -0.965051f, -0.650043f, -0.524772f, -0.500133f, 0.0f, 0.0f, 0.500133f,
               0.602446f, 0.827465f, 1.96943f, 9.94394f});
    expectRow(2, 5,
              {-10.0f, -0.5773f, -0.436f, -0.385f, -0.375f, -0.3749f, 0.3749f, 0.375f, 0.4151f,
               0.511f, 1.0492f, 10.0f},
              {-9.98022f, -0.487815f, -0.326644f, -0.263167f, -0.25f, 0.0f, 0.0f, 0.25f, 0.301223f,
               0.413846f, 0.986266f, 9.98022f});
    expectRow(3, 5,
              {-10.0f, -0.2895f, -0.2182f, -0.1926f, -0.1875f, -0.1874f, 0.1874f, 0.1875f, 0.2076f,
               0.2557f, 0.5272f, 10.0f},
              {-9.99301f, -0.244843f, -0.163562f, -0.131714f, -0.125f, 0.0f, 0.0f, 0.125f,
               0.150673f, 0.20715f, 0.495819f, 9.99301f});
    expectRow(4, 5,
              {-10.0f, -0.1449f, -0.1092f, -0.0963f, -0.0938f, -0.0937f, 0.0937f, 0.0938f, 0.1039f,
               0.1282f, 0.2681f, 10.0f},
              {-9.99753f, -0.122586f, -0.0819011f, -0.0658569f, -0.0625666f, 0.0f, 0.0f, 0.0625666f,
               0.0754598f, 0.103971f, 0.252554f, 9.99753f});
    expectRow(5, 5,
              {-10.0f, -0.0725f, -0.0546f, -0.0482f, -0.0469f, -0.0468f, 0.0468f, 0.0469f, 0.052f,
               0.0643f, 0.1368f, 10.0f},
              {-9.99913f, -0.0613482f, -0.0409505f, -0.0329934f, -0.0312833f, 0.0f, 0.0f,
               0.0312833f, 0.0377915f, 0.0522118f, 0.129113f, 9.99913f});
}

TEST(ShrinkTable, KnotsRiseStrictlyFromMinusTenToTen) {
    forEachStoredRow([](int, int, const StoredShrink& row) {
        EXPECT_EQ(row.levels[0], -10.0f);
        EXPECT_EQ(row.levels[row.knots - 1], 10.0f);
        for (int k = 1; k < row.knots; ++k) {
            EXPECT_LT(row.levels[k - 1], row.levels[k]);
        }
    });
}

TEST(ShrinkTable, RowsEndWithAlphaOrTheKnotCountAndZeros) {
    constexpr std::array<int, kShrinkAlphas> kKnots = {6, 6, 8, 8, 10, 12, 14, 16, 18, 22, 6};
    forEachStoredRow([&](int level, int a, const StoredShrink& row) {
        EXPECT_EQ(row.levels, kStoredShrinkTable[22 * level + 2 * a]);
        EXPECT_EQ(row.values, kStoredShrinkTable[22 * level + 2 * a + 1]);
        EXPECT_EQ(row.knots, kKnots[static_cast<std::size_t>(a)]);
        EXPECT_EQ(row.levels[row.knots], static_cast<float>(a / 10.0));
        EXPECT_EQ(row.values[row.knots], static_cast<float>(row.knots));
        for (int k = row.knots + 1; k < kShrinkColumns; ++k) {
            EXPECT_EQ(row.levels[k], 0.0f);
            EXPECT_EQ(row.values[k], 0.0f);
        }
    });
}

TEST(ShrinkTable, KnotsOfAJumpPairAreOneGridStepApartAtTheThreshold) {
    forEachStoredRow([](int level, int a, const StoredShrink& row) {
        if (a == 10) {
            return;
        }
        const int right = row.knots / 2;
        const int left = right - 1;
        const auto gridIndex = [](float knot) { return std::lround(10000.0 * knot); };
        for (const int inner : {left, right}) {
            const int outer = inner == left ? left - 1 : right + 1;
            const long step =
                std::labs(gridIndex(row.levels[outer])) - std::labs(gridIndex(row.levels[inner]));
            EXPECT_EQ(step, 1);
            EXPECT_EQ(row.values[inner], 0.0f);
            EXPECT_NE(row.values[outer], 0.0f);
            // The exact solution jumps between the knots of the pair.
            const double beta = betaOfLevel(level);
            EXPECT_EQ(exactShrink(row.levels[inner] * (1 - 1e-6), a / 10.0, beta), 0.0);
            EXPECT_NE(exactShrink(row.levels[outer] * (1 + 1e-6), a / 10.0, beta), 0.0);
        }
    });
}

TEST(ShrinkTable, KnotsLieOnTheGridAndOnTheExactFunction) {
    forEachStoredRow([](int level, int a, const StoredShrink& row) {
        const double beta = betaOfLevel(level);
        for (int k = 0; k < row.knots; ++k) {
            const double knot = row.levels[k];
            if (a < 10) {
                EXPECT_NEAR(10000.0 * knot, std::round(10000.0 * knot), 0.005);
            }
            if (row.values[k] != 0) {
                // The defined rows have six digits. The exact function is evaluated slightly
                // further out, because one of their jumps is exactly at the threshold.
                EXPECT_NEAR(row.values[k], exactShrink(knot * (1 + 1e-7), a / 10.0, beta),
                            1e-5 * std::abs(knot) + 1e-6);
            }
        }
    });
}

TEST(ShrinkTable, SoftThresholdRowsHoldThresholdsAndMidpoints) {
    for (int level = 0; level < kShrinkLevels; ++level) {
        const StoredShrink row = storedShrink(level, 10);
        const double edge = 1 / betaOfLevel(level);
        const std::array<double, 3> right = {edge, (edge + 10) / 2, 10};
        for (int k = 0; k < 3; ++k) {
            const double knot = right[static_cast<std::size_t>(k)];
            EXPECT_FLOAT_EQ(row.levels[3 + k], static_cast<float>(knot));
            EXPECT_FLOAT_EQ(row.levels[2 - k], static_cast<float>(-knot));
            EXPECT_FLOAT_EQ(row.values[3 + k], static_cast<float>(knot - edge));
            EXPECT_FLOAT_EQ(row.values[2 - k], static_cast<float>(edge - knot));
        }
    }
}

TEST(ShrinkTable, PolylinesStayWithinTheToleranceOfTheirLevel) {
    for (int level = 0; level < kShrinkLevels; ++level) {
        const double beta = betaOfLevel(level);
        // The defined rows set the tolerance for all other rows.
        const double tolerance = largestError(storedShrink(level, 5), 0.5, beta);
        EXPECT_LE(tolerance, level == 4 ? 0.0135 : 0.065);
        for (int a = 0; a < kShrinkAlphas; ++a) {
            EXPECT_LE(largestError(storedShrink(level, a), a / 10.0, beta), tolerance)
                << "level " << level << ", alpha " << a / 10.0;
        }
    }
}

TEST(ShrinkTable, TheIndexOfAlphaTruncatesTheDoubleThatHoldsTheFloat) {
    constexpr std::array<float, 11> kAlphas = {0.0f, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f,
                                               0.6f, 0.7f, 0.8f, 0.9f, 1.0f};
    constexpr std::array<int, 11> kIndices = {0, 1, 2, 3, 4, 5, 6, 6, 8, 8, 10};
    for (std::size_t i = 0; i < kAlphas.size(); ++i) {
        EXPECT_EQ(shrinkAlphaIndex(kAlphas[i]), kIndices[i]) << kAlphas[i];
    }
    EXPECT_EQ(shrinkAlphaIndex(std::nextafter(0.9f, 1.0f)), 9);
    EXPECT_EQ(shrinkAlphaIndex(0.999999f), 9);
    EXPECT_EQ(shrinkAlphaIndex(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(ShrinkTable, TheScheduleOfBetaGivesTheLevelsZeroToFive) {
    double beta = 1.0;
    for (int level = 0; level < kShrinkLevels; ++level) {
        EXPECT_EQ(shrinkLevel(beta, kRate), level);
        EXPECT_LT(beta, 256.0);
        beta *= kRate;
    }
    EXPECT_GE(beta, 256.0);
    EXPECT_EQ(shrinkLevel(1e9, kRate), 5);
    EXPECT_EQ(shrinkLevel(std::numeric_limits<double>::quiet_NaN(), kRate), 0);
}

} // namespace
