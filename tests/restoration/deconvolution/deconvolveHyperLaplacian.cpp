#include "restoration/deconvolution/deconvolveHyperLaplacian.h"

#include "DirectTransform.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "tests/support/EachTarget.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

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

/// The polyline of a level at `v`.
double shrunk(double v, int level) {
    const vel::StoredShrink line = vel::storedShrink(level, 5);
    int k = 1;
    while (k + 1 < line.knots && v > static_cast<double>(line.levels[k])) {
        ++k;
    }
    const double from = static_cast<double>(line.levels[k - 1]);
    const double to = static_cast<double>(line.levels[k]);
    const double low = static_cast<double>(line.values[k - 1]);
    return low + (static_cast<double>(line.values[k]) - low) * (v - from) / (to - from);
}

/// The six passes by their definition, in double.
Plane expectedRestoration(const Plane& y, const Kernel& kernel, const HyperLaplacian& prior) {
    constexpr int kSide = test::kDirectSide;
    const test::Spectrum k = test::spectrumOf(kernel);
    const test::Spectrum observed = test::spectrumOf(y);
    Plane x = copyOf(y);
    double beta = 1;
    for (int level = 0; level < 6; ++level) {
        test::Spectrum adjoint(k.size());
        for (int row = 0; row < kSide; ++row) {
            for (int column = 0; column < kSide; ++column) {
                const auto here = static_cast<double>(x.row(row)[column]);
                const int right = (column + 1) % kSide;
                const int below = (row + 1) % kSide;
                const double wx = shrunk(static_cast<double>(x.row(row)[right]) - here, level);
                const double wy = shrunk(static_cast<double>(x.row(below)[column]) - here, level);
                adjoint[test::at(row, column)] -= wx + wy;
                adjoint[test::at(row, right)] += wx;
                adjoint[test::at(below, column)] += wy;
            }
        }
        adjoint = test::transformed(adjoint, -1);
        const double gamma = beta / static_cast<double>(prior.strength);
        for (int v = 0; v < kSide; ++v) {
            for (int u = 0; u < kSide; ++u) {
                const std::size_t i = test::at(v, u);
                adjoint[i] = (std::conj(k[i]) * observed[i] + gamma * adjoint[i]) /
                             (std::norm(k[i]) + gamma * test::differencePower(v, u));
            }
        }
        x = test::planeOf(adjoint);
        beta *= 2 * std::numbers::sqrt2;
    }
    return x;
}

TEST(DeconvolveHyperLaplacian, FollowsItsDefinition) {
    const Kernel kernel = unevenKernel(5, 7);
    for (const Plane& sharp : {circularScene(test::kDirectSide), test::noise()}) {
        Plane y = blurred(sharp, kernel);
        const Plane expected = expectedRestoration(y, kernel, {2000.0f, 0.5f});
        const Plane x =
            restored(y, nullptr, BlurSpectrum(kernel, test::kDirectSide), {2000.0f, 0.5f});
        EXPECT_LT(distance(x, expected), 2e-5);
    }
}

TEST(DeconvolveHyperLaplacian, ReplacesUnknownPixelsOnly) {
    const Kernel kernel = unevenKernel(5, 7);
    const Plane seen = blurred(circularScene(64), kernel);
    Mask known(64, 64);
    for (int row = 0; row < 64; ++row) {
        std::fill_n(known.row(row), 50, std::uint8_t{1});
    }
    Plane y = copyOf(seen);
    y.row(30)[55] = 1.0f;
    restored(y, &known, BlurSpectrum(kernel, 64));
    for (int row = 0; row < 64; ++row) {
        for (int column = 0; column < 50; ++column) {
            ASSERT_EQ(y.row(row)[column], seen.row(row)[column]);
        }
    }
    EXPECT_LT(y.row(30)[55], 0.95f);
}

TEST(DeconvolveHyperLaplacian, ExtremeInputEnds) {
    const BlurSpectrum blur(unevenKernel(5, 7), 64);
    for (const float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38f}) {
        Plane y = circularScene(64);
        y.row(7)[9] = value;
        restored(y, nullptr, blur);
        restored(y, nullptr, blur, {std::numeric_limits<float>::quiet_NaN(), value});
    }
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
