#include "velimproclib/veldeblurcv/kernels/gaussian1D.h"

#include "tests/support/Digest.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <vector>

namespace {

using vel::gaussian1D;

template <class Call>
std::string textOf(Call&& call) {
    try {
        call();
    } catch (const char* text) {
        return text;
    }
    return "no failure";
}

TEST(Gaussian1D, EvenAndNonPositiveSizesFailInBothFormsAndWriteNothing) {
    for (const int size : {-3, -2, -1, 0, 2, 4, 100}) {
        float taps[1] = {-7.0f};
        EXPECT_EQ(textOf([&] { gaussian1D(taps, size, 1.0f); }), "gaussian1D - (s2*2+1 != size)");
        EXPECT_EQ(taps[0], -7.0f);
        int fixed[1] = {-7};
        int sum = -9;
        EXPECT_EQ(textOf([&] { gaussian1D(fixed, &sum, size, 1.0f); }),
                  "gaussian1D - (s2*2+1 != size)");
        EXPECT_EQ(fixed[0], -7);
        EXPECT_EQ(sum, -9);
    }
}

TEST(Gaussian1D, FloatTapsAreASymmetricGaussianOfSumOne) {
    for (int size = 1; size <= 15; size += 2) {
        for (const float sigma : {0.3f, 0.5f, 0.85f, 1.0f, 1.7f, 4.0f, 20.0f}) {
            std::vector<float> taps(static_cast<std::size_t>(size));
            gaussian1D(taps.data(), size, sigma);
            const auto middle = static_cast<std::size_t>(size / 2);
            EXPECT_NEAR(std::accumulate(taps.begin(), taps.end(), 0.0), 1.0, 1e-6);
            for (std::size_t i = 0; i <= middle; ++i) {
                const double distance = static_cast<double>(i) / sigma;
                EXPECT_EQ(taps[middle - i], taps[middle + i]);
                EXPECT_NEAR(taps[middle + i] / taps[middle], std::exp(-0.5 * distance * distance),
                            1e-6);
            }
        }
    }
}

TEST(Gaussian1D, TapsKeepTheirBits) {
    vel::test::Digest digest;
    for (int size = 1; size <= 15; size += 2) {
        for (const float sigma : {0.3f, 0.5f, 0.85f, 1.0f, 1.7f, 4.0f, 20.0f}) {
            std::vector<float> taps(static_cast<std::size_t>(size));
            gaussian1D(taps.data(), size, sigma);
            digest.add(taps);
        }
    }
    EXPECT_EQ(digest.text(), "7F84B627ED658407");
}

TEST(Gaussian1D, FixedPointTapsTruncateAfterAddingJustBelowOneHalf) {
    int taps[5];
    int sum = 0;
    gaussian1D(taps, &sum, 5, 1.0f);
    EXPECT_EQ(taps[0], 554);
    EXPECT_EQ(taps[1], 2484);
    EXPECT_EQ(taps[2], 4096);
    EXPECT_EQ(taps[3], 2484);
    EXPECT_EQ(taps[4], 554);
    EXPECT_EQ(sum, 10172);
}

TEST(Gaussian1D, FarFixedPointTapsMayBeZero) {
    int taps[5];
    int sum = 0;
    gaussian1D(taps, &sum, 5, 0.2f);
    EXPECT_EQ(taps[0], 0);
    EXPECT_EQ(taps[1], 0);
    EXPECT_EQ(sum, 4096);
}

TEST(Gaussian1D, SigmaOfZeroOrNaNGivesNaNTapsOrASumOfZero) {
    float taps[3];
    for (const float sigma : {0.0f, std::nanf("")}) {
        gaussian1D(taps, 3, sigma);
        EXPECT_TRUE(std::isnan(taps[1])) << sigma;
    }
    int fixed[3];
    int sum = 0;
    gaussian1D(fixed, &sum, 3, std::nanf(""));
    EXPECT_EQ(sum, 0);
}

} // namespace
