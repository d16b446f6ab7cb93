#include "restoration/deconvolution/BlurSpectrum.h"

#include "DirectTransform.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/deconvolution/tileTransforms.h"
#include "tests/support/EachTarget.h"

#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

using test::at;
using test::Complex;
using test::differencePower;
using test::noise;
using test::planeOf;
using test::Spectrum;
using test::spectrumOf;

constexpr int kSide = test::kDirectSide;

/// `filter(block, spectrum)` between the transforms of a plane.
template <class Filter>
Plane filtered(const Plane& plane, const BlurSpectrum& blur, const Filter& filter) {
    TileScratch scratch(kSide);
    const vel::RealFft2D& fft = blur.fft();
    float* spectrum = scratch.spectrum(fft, 0);
    forwardRows(fft, plane, spectrum, scratch.rowMemory(fft), Cancellation());
    forEachBlock(fft, Cancellation(), [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum + offset, block);
        filter(block, spectrum + offset);
        fft.inverseColumns(spectrum + offset, block);
    });
    Plane result(kSide, kSide);
    inverseRows(fft, spectrum, result, scratch.rowMemory(fft), Cancellation());
    return result;
}

TEST(BlurSpectrum, BlurIsTheCircularConvolution) {
    for (const Kernel& kernel : {test::unevenKernel(5, 7), test::unevenKernel(41, 3)}) {
        const BlurSpectrum blur(kernel, kSide);
        const Plane plane = noise();
        const Plane result =
            filtered(plane, blur, [&](int block, float* x) { blur.blur(block, x, x); });
        EXPECT_LT(test::largestDifference(result, test::blurred(plane, kernel)), 2e-6);
    }
}

TEST(BlurSpectrum, ReblurIsItsQuotientAtEveryFrequency) {
    const Kernel kernel = test::unevenKernel(5, 7);
    const BlurSpectrum blur(kernel, kSide);
    constexpr float kWeight = 0.03f;
    const Plane plane = noise();
    const Plane result =
        filtered(plane, blur, [&](int block, float* x) { blur.reblur(block, kWeight, x); });
    Spectrum expected = spectrumOf(plane);
    const Spectrum k = spectrumOf(kernel);
    for (int v = 0; v < kSide; ++v) {
        for (int u = 0; u < kSide; ++u) {
            const double power = std::norm(k[at(v, u)]);
            expected[at(v, u)] *=
                power / (power + static_cast<double>(kWeight) * differencePower(v, u));
        }
    }
    EXPECT_LT(test::largestDifference(result, planeOf(expected)), 2e-6);
}

Plane quadratic(const Plane& y, const Kernel& kernel, float weight, const Plane* mean) {
    TileScratch scratch(kSide);
    Plane x(kSide, kSide);
    deconvolveQuadratic(y, BlurSpectrum(kernel, kSide), weight, mean, x, scratch, Cancellation());
    return x;
}

TEST(DeconvolveQuadratic, SolvesTheNormalEquations) {
    const Kernel kernel = test::unevenKernel(5, 7);
    constexpr float kWeight = 0.02f;
    const Plane y = noise();
    const Plane other = test::circularScene(kSide);
    const Spectrum k = spectrumOf(kernel);
    for (const Plane* mean : {static_cast<const Plane*>(nullptr), &other}) {
        Spectrum expected = spectrumOf(y);
        const Spectrum meanSpectrum = spectrumOf(other);
        for (int v = 0; v < kSide; ++v) {
            for (int u = 0; u < kSide; ++u) {
                const double prior = static_cast<double>(kWeight) * differencePower(v, u);
                Complex numerator = std::conj(k[at(v, u)]) * expected[at(v, u)];
                if (mean != nullptr) {
                    numerator += prior * meanSpectrum[at(v, u)];
                }
                expected[at(v, u)] = numerator / (std::norm(k[at(v, u)]) + prior);
            }
        }
        EXPECT_LT(test::largestDifference(quadratic(y, kernel, kWeight, mean), planeOf(expected)),
                  2e-5);
    }
}

TEST(DeconvolveQuadratic, AllVariantsGiveTheSameBits) {
    const Plane y = noise();
    const Plane mean = test::circularScene(kSide);
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        const Plane x = quadratic(y, test::unevenKernel(5, 7), 0.02f, &mean);
        const std::vector<float> found(x.values().begin(), x.values().end());
        if (expected.empty()) {
            expected = found;
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(DeconvolveQuadratic, CancelledCallFails) {
    TileScratch scratch(kSide);
    Plane x = noise();
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(deconvolveQuadratic(x, BlurSpectrum(test::unevenKernel(3, 3), kSide), 0.1f,
                                     nullptr, x, scratch, cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
