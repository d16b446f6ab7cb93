#include "restoration/deconvolution/estimateUnknown.h"

#include "CircularScene.h"
#include "restoration/tiles/joinEdges.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

constexpr int kSide = 128;
constexpr int kWindow = 108;

Mask windowMask() {
    Mask known(kSide, kSide);
    for (int y = 0; y < kWindow; ++y) {
        std::fill_n(known.row(y), kWindow, std::uint8_t{1});
    }
    return known;
}

Plane estimated(Plane y, const Mask& known, const BlurSpectrum& blur) {
    TileScratch scratch(kSide);
    estimateUnknown(y, known, blur, scratch, Cancellation());
    return y;
}

TEST(EstimateUnknown, KeepsKnownPixels) {
    const BlurSpectrum blur(test::unevenKernel(5, 7), kSide);
    const Plane seen = test::circularScene(kSide);
    const Mask known = windowMask();
    const Plane y = estimated(test::copyOf(seen), known, blur);
    for (int row = 0; row < kWindow; ++row) {
        for (int x = 0; x < kWindow; ++x) {
            ASSERT_EQ(y.row(row)[x], seen.row(row)[x]);
        }
    }
    EXPECT_NE(y.row(kSide - 1)[kSide - 1], seen.row(kSide - 1)[kSide - 1]);
}

TEST(EstimateUnknown, FindsPixelsNextToKnownOnes) {
    const Kernel kernel = test::unevenKernel(9, 9);
    const Plane seen = test::blurred(test::circularScene(kSide), kernel);
    Mask known(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        std::fill_n(known.row(y), kSide, std::uint8_t{1});
    }
    Plane y = test::copyOf(seen);
    for (int row = 60; row < 64; ++row) {
        std::fill_n(known.row(row) + 60, 4, std::uint8_t{0});
        std::fill_n(y.row(row) + 60, 4, 1.0f);
    }
    const double before = test::distance(y, seen);
    const Plane found = estimated(std::move(y), known, BlurSpectrum(kernel, kSide));
    EXPECT_LT(test::distance(found, seen), 0.25 * before);
}

TEST(EstimateUnknown, ConstantPlaneStaysConstant) {
    const BlurSpectrum blur(test::unevenKernel(5, 7), kSide);
    Plane seen(kSide, kSide);
    std::ranges::fill(seen.values(), 0.6f);
    const Plane y = estimated(test::copyOf(seen), windowMask(), blur);
    EXPECT_LT(test::largestDifference(y, seen), 1e-5);
}

TEST(EstimateUnknown, NaNEndsInFiniteTime) {
    const BlurSpectrum blur(test::unevenKernel(5, 7), kSide);
    Plane seen = test::circularScene(kSide);
    seen.row(5)[5] = std::numeric_limits<float>::quiet_NaN();
    const Plane y = estimated(std::move(seen), windowMask(), blur);
    EXPECT_TRUE(std::isnan(y.row(5)[5]));
    EXPECT_FALSE(std::isnan(y.row(50)[50]));
}

TEST(EstimateUnknown, CancelledCallFails) {
    Plane y = test::circularScene(kSide);
    TileScratch scratch(kSide);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(estimateUnknown(y, windowMask(), BlurSpectrum(test::unevenKernel(5, 7), kSide),
                                 scratch, cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
