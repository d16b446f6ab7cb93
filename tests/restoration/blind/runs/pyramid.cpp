#include "restoration/blind/runs/pyramid.h"

#include "restoration/blind/runs/gaussianBlur.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace restoration {
namespace {

const Cancellation kNever;

TEST(GaussianBlur, TapsAreAGaussianOfUnitSum) {
    const std::vector<float> taps = gaussianTaps(1.5);
    double sum = taps.front();
    for (std::size_t d = 1; d < taps.size(); ++d) {
        sum += 2.0 * static_cast<double>(taps[d]);
    }
    EXPECT_NEAR(sum, 1.0, 1e-6);
    EXPECT_NEAR(taps[3] / taps[0], std::exp(-2.0), 1e-6);
    EXPECT_LT(taps.back(), 1e-3f * taps.front());
}

TEST(GaussianBlur, ReflectsAtTheRim) {
    Plane plane(4, 1);
    const std::vector<float> levels{1.0f, 0.0f, 0.0f, 0.5f};
    std::ranges::copy(levels, plane.values().begin());
    const std::vector<float> taps{0.5f, 0.25f};
    const Plane repeating = blurred(plane, taps, Reflection::RepeatsLast, kNever);
    EXPECT_FLOAT_EQ(repeating.row(0)[0], 0.75f);
    EXPECT_FLOAT_EQ(repeating.row(0)[1], 0.25f);
    const Plane skipping = blurred(plane, taps, Reflection::SkipsLast, kNever);
    EXPECT_FLOAT_EQ(skipping.row(0)[0], 0.5f);
    EXPECT_FLOAT_EQ(skipping.row(0)[3], 0.25f);
}

TEST(GaussianBlur, ReachesBeyondSmallPlanes) {
    Plane plane(3, 2);
    std::ranges::fill(plane.values(), 0.4f);
    for (const Reflection reflection : {Reflection::RepeatsLast, Reflection::SkipsLast}) {
        const Plane soft = blurred(plane, gaussianTaps(5.0), reflection, kNever);
        for (const float value : soft.values()) {
            EXPECT_NEAR(value, 0.4f, 1e-6f);
        }
    }
}

TEST(Pyramid, ReductionScalesDistancesAboutTheCentre) {
    Plane ramp(101, 81);
    for (int y = 0; y < 81; ++y) {
        for (int x = 0; x < 101; ++x) {
            ramp.row(y)[x] =
                0.005f * static_cast<float>(x - 50) - 0.003f * static_cast<float>(y - 40);
        }
    }
    const double scale = std::sqrt(0.5);
    const Plane small = reduced(ramp, scale, kNever);
    ASSERT_EQ(small.width(), 71);
    ASSERT_EQ(small.height(), 57);
    for (int y = 5; y < 52; ++y) {
        for (int x = 5; x < 66; ++x) {
            const double expected = (0.005 * (x - 35) - 0.003 * (y - 28)) / scale;
            EXPECT_NEAR(static_cast<double>(small.row(y)[x]), expected, 5e-4);
        }
    }
}

TEST(Pyramid, FullSizeIsACopy) {
    const Plane plane = DrawnScene(40, 30, 1).plane();
    EXPECT_TRUE(std::ranges::equal(reduced(plane, 1.0, kNever).values(), plane.values()));
}

TEST(Pyramid, WrappedPlaneKeepsThePictureAndJoinsItsEdges) {
    Plane slope(50, 40);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 50; ++x) {
            slope.row(y)[x] = 0.01f * static_cast<float>(x) + 0.005f * static_cast<float>(y);
        }
    }
    const Plane wide = wrappedAround(slope, 64, kNever);
    for (int y = 0; y < 40; ++y) {
        EXPECT_TRUE(std::equal(slope.row(y), slope.row(y) + 50, wide.row(y)));
    }
    // The last and the first column differ by 0.49.
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            EXPECT_LT(std::abs(wide.row(y)[(x + 1) % 64] - wide.row(y)[x]), 0.2f);
            EXPECT_LT(std::abs(wide.row((y + 1) % 64)[x] - wide.row(y)[x]), 0.2f);
        }
    }
}

} // namespace
} // namespace restoration
