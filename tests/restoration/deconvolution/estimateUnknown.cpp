#include "restoration/deconvolution/estimateUnknown.h"

#include "CircularScene.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/deconvolution/unknownRows.h"
#include "restoration/kernels/analyticKernel.h"
#include "restoration/tiles/joinEdges.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

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

/// Twelve passes without extrapolation, with weights that fall faster.
Plane plainlyEstimated(Plane y, const Mask& known, const BlurSpectrum& blur) {
    const vel::RealFft2D& fft = blur.fft();
    TileScratch scratch(kSide);
    const Cancellation cancellation;
    Plane again(kSide, kSide);
    float weight = 3e-2f;
    for (int pass = 0; pass < 12; ++pass) {
        float* spectrum = scratch.spectrum(fft, 0);
        forwardRows(fft, y, spectrum, scratch.rowMemory(fft), cancellation);
        forEachBlock(fft, cancellation, [&](int block, std::size_t offset) {
            fft.forwardColumns(spectrum + offset, block);
            blur.reblur(block, weight, spectrum + offset);
            fft.inverseColumns(spectrum + offset, block);
        });
        inverseRows(fft, spectrum, again, scratch.rowMemory(fft), cancellation);
        for (int row = 0; row < kSide; ++row) {
            replaceUnknown(known.row(row), again.row(row), y.row(row), std::size_t{kSide});
        }
        weight = pass < 3 ? 0.3f * weight : 3e-4f;
    }
    return y;
}

/// The distance on the four pixels beside the window.
double distanceNextToTheWindow(const Plane& a, const Plane& b) {
    double sum = 0;
    for (int row = 20; row < 88; ++row) {
        for (int x = kWindow; x < kWindow + 4; ++x) {
            const auto difference = static_cast<double>(a.row(row)[x] - b.row(row)[x]);
            sum += difference * difference;
        }
    }
    return std::sqrt(sum / (68 * 4));
}

TEST(EstimateUnknown, IsBetterThanTwelvePlainPasses) {
    const Kernel kernel = test::unevenKernel(13, 13);
    const BlurSpectrum blur(kernel, kSide);
    const Plane seen = test::blurred(test::circularScene(kSide), kernel);
    Plane start = test::copyOf(seen);
    joinEdges(start, kWindow, kWindow);
    const Mask known = windowMask();
    const double plain =
        distanceNextToTheWindow(plainlyEstimated(test::copyOf(start), known, blur), seen);
    const double found = distanceNextToTheWindow(estimated(std::move(start), known, blur), seen);
    EXPECT_LT(found, 0.98 * plain);
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

/// Mean squared error of the known pixels as a restoration of the completed plane explains them.
double misfit(const Plane& y, const Mask& known, const Kernel& kernel) {
    TileScratch scratch(kSide);
    Plane x(kSide, kSide);
    deconvolveQuadratic(y, BlurSpectrum(kernel, kSide), 5e-4f, nullptr, x, scratch, Cancellation());
    const Plane again = test::blurred(x, kernel);
    double sum = 0;
    for (int row = 0; row < kSide; ++row) {
        for (int column = 0; column < kSide; ++column) {
            const auto error = static_cast<double>(again.row(row)[column] - y.row(row)[column]);
            sum += known.row(row)[column] != 0 ? error * error : 0.0;
        }
    }
    return sum / (kSide * kSide);
}

TEST(EstimateClipped, ExplainsWhatSurroundsALamp) {
    const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    const BlurSpectrum blur(kernel, kSide);
    Plane scene = test::circularScene(kSide);
    for (float& value : scene.values()) {
        value *= 0.3f;
    }
    std::fill_n(scene.row(60) + 60, 3, 15.0f);
    const Plane light = test::blurred(scene, kernel);
    Plane y = test::copyOf(light);
    Mask known(kSide, kSide);
    for (int row = 0; row < kSide; ++row) {
        for (int x = 0; x < kSide; ++x) {
            const bool isFar = std::hypot(x - 61, row - 60) > 6.0;
            known.row(row)[x] = isFar ? 1 : 0;
            y.row(row)[x] = isFar ? y.row(row)[x] : std::min(y.row(row)[x], 1.0f);
        }
    }
    TileScratch scratch(kSide);
    y = estimated(std::move(y), known, blur);
    const double before = misfit(y, known, kernel);
    estimateClipped(y, known, blur, scratch, Cancellation());
    RecordProperty("ratio", std::to_string(misfit(y, known, kernel) / before));
    EXPECT_LT(misfit(y, known, kernel), 0.6 * before);
    EXPECT_EQ(y.row(20)[20], light.row(20)[20]);
}

} // namespace
} // namespace restoration
