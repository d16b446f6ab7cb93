#include "restoration/deconvolution/deconvolveHyperLaplacian.h"

#include "CircularScene.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace restoration {
namespace {

using test::blurred;
using test::circularScene;
using test::copyOf;
using test::distance;
using test::unevenKernel;

constexpr HyperLaplacian kPrior{20000.0f, 0.5f};

Plane restored(Plane& y, const Mask* known, const BlurSpectrum& blur,
               const HyperLaplacian& prior = kPrior) {
    TileScratch scratch(blur.side());
    Plane x(blur.side(), blur.side());
    deconvolveHyperLaplacian(y, known, blur, prior, x, scratch, Cancellation());
    return x;
}

TEST(DeconvolveHyperLaplacian, UndoesMostOfACircularBlur) {
    const Plane scene = circularScene(128);
    const Kernel kernel = unevenKernel(5, 7);
    Plane y = blurred(scene, kernel);
    const double before = distance(y, scene);
    const Plane x = restored(y, nullptr, BlurSpectrum(kernel, 128));
    EXPECT_LT(distance(x, scene), 0.3 * before);
}

TEST(DeconvolveHyperLaplacian, ShiftOfTheTileShiftsTheResult) {
    constexpr int kSide = 64;
    const Kernel kernel = unevenKernel(5, 3);
    const BlurSpectrum blur(kernel, kSide);
    Plane y = blurred(circularScene(kSide), kernel);
    Plane shifted(kSide, kSide);
    for (int row = 0; row < kSide; ++row) {
        for (int column = 0; column < kSide; ++column) {
            shifted.row((row + 9) % kSide)[(column + 21) % kSide] = y.row(row)[column];
        }
    }
    const Plane x = restored(y, nullptr, blur);
    const Plane moved = restored(shifted, nullptr, blur);
    double largest = 0;
    for (int row = 0; row < kSide; ++row) {
        for (int column = 0; column < kSide; ++column) {
            const float a = x.row(row)[column];
            const float b = moved.row((row + 9) % kSide)[(column + 21) % kSide];
            largest = std::max(largest, static_cast<double>(std::abs(a - b)));
        }
    }
    EXPECT_LT(largest, 2e-3);
}

TEST(DeconvolveHyperLaplacian, AllVariantsGiveTheSameBits) {
    const Kernel kernel = unevenKernel(5, 7);
    const Plane seen = blurred(circularScene(64), kernel);
    Mask known(64, 64);
    for (int y = 0; y < 50; ++y) {
        std::fill_n(known.row(y), 47, std::uint8_t{1});
    }
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        const BlurSpectrum blur(kernel, 64);
        Plane y = copyOf(seen);
        TileScratch scratch(64);
        estimateUnknown(y, known, blur, scratch, Cancellation());
        const Plane x = restored(y, &known, blur);
        const std::vector<float> found(x.values().begin(), x.values().end());
        if (expected.empty()) {
            expected = found;
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(DeconvolveHyperLaplacian, CancelledCallFails) {
    const BlurSpectrum blur(unevenKernel(5, 7), 64);
    Plane y = circularScene(64);
    Plane x(64, 64);
    TileScratch scratch(64);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(deconvolveHyperLaplacian(y, nullptr, blur, kPrior, x, scratch, cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
