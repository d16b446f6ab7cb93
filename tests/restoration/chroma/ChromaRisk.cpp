#include "restoration/chroma/ChromaRisk.h"

#include "noisyScene.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "tests/restoration/deconvolution/CircularScene.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>

namespace restoration {
namespace {

using test::noisePlane;
using test::unevenKernel;

constexpr int kSide = 64;

ChromaRisk riskOf(const Plane& y, const BlurSpectrum& blur) {
    TileScratch scratch(blur.side());
    ChromaRisk risk;
    risk.add(y, 1, blur, scratch, Cancellation());
    return risk;
}

double phase(int frequency, int position) {
    return 2 * std::numbers::pi * frequency * position / kSide;
}

/// |K|^2 of one frequency, summed in double.
double kernelPower(const Kernel& kernel, int v, int u) {
    std::complex<double> sum;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            sum += std::polar(static_cast<double>(kernel.at(r, c)), -phase(v, r) - phase(u, c));
        }
    }
    return std::norm(sum);
}

double differencePower(int v, int u) {
    return 4 - 2 * std::cos(phase(v, 1)) - 2 * std::cos(phase(u, 1));
}

/// The reblurred restoration multiplies a wave by one gain, whatever part of the half spectrum
/// holds it.
TEST(ChromaRisk, OfAWaveIsWhatItsRestorationTakesAway) {
    const Kernel kernel = unevenKernel(5, 3);
    const BlurSpectrum blur(kernel, kSide);
    constexpr int kHalf = kSide / 2;
    constexpr int kWaves[][2] = {{0, kHalf}, {kHalf, 0}, {kHalf, kHalf}, {3, 0},  {61, 0},
                                 {5, kHalf}, {3, 5},     {61, 5},        {0, 17}, {kHalf, 31}};
    for (const auto& [v, u] : kWaves) {
        Plane wave(kSide, kSide);
        double energy = 0;
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const double value = std::cos(phase(v, y) + phase(u, x));
                wave.row(y)[x] = static_cast<float>(value);
                energy += value * value / (kSide * kSide);
            }
        }
        const ChromaRisk risk = riskOf(wave, blur);
        for (const double weight : {0.003, 0.1, 4.0}) {
            const double prior = weight * differencePower(v, u);
            const double lost = prior / (kernelPower(kernel, v, u) + prior);
            EXPECT_NEAR(risk.risk(weight, 0), energy * lost * lost, 0.13 * energy * lost * lost)
                << v << ' ' << u << ' ' << weight;
        }
    }
}

TEST(ChromaRisk, OfPureNoiseCountsEveryFrequencyOnce) {
    const Kernel kernel = unevenKernel(5, 3);
    Plane zero = noisePlane(kSide, 0);
    const ChromaRisk risk = riskOf(zero, BlurSpectrum(kernel, kSide));
    EXPECT_NEAR(risk.risk(1e-12, 0.25), 2 * 0.25, 1e-6);
    for (const double weight : {0.01, 1.0}) {
        double gains = 0;
        for (int v = 0; v < kSide; ++v) {
            for (int u = 0; u < kSide; ++u) {
                const double power = kernelPower(kernel, v, u);
                gains += power / (power + weight * differencePower(v, u));
            }
        }
        EXPECT_NEAR(risk.risk(weight, 1), 2 * gains / (kSide * kSide), 0.005);
    }
}

TEST(ChromaRisk, GradientNoiseIsThatOfRestoredNoise) {
    constexpr int kLarge = 256;
    const BlurSpectrum blur(unevenKernel(7, 5), kLarge);
    const Plane noise = noisePlane(kLarge, 0.02);
    Plane x(kLarge, kLarge);
    TileScratch scratch(kLarge);
    for (const float weight : {0.01f, 0.5f}) {
        deconvolveQuadratic(noise, blur, weight, nullptr, x, scratch, Cancellation());
        double sum = 0;
        for (int row = 0; row < kLarge; ++row) {
            for (int column = 0; column < kLarge; ++column) {
                const double here = static_cast<double>(x.row(row)[column]);
                const double right = static_cast<double>(x.row(row)[(column + 1) % kLarge]) - here;
                const double below = static_cast<double>(x.row((row + 1) % kLarge)[column]) - here;
                sum += right * right + below * below;
            }
        }
        const double measured = sum / (kLarge * kLarge);
        const auto wide = static_cast<double>(weight);
        EXPECT_NEAR(riskOf(noise, blur).gradientNoise(wide, 0.02 * 0.02), measured,
                    0.04 * measured);
    }
}

TEST(ChromaRisk, IsThatOfAKnownPixel) {
    const BlurSpectrum blur(unevenKernel(5, 3), kSide);
    const Plane y = noisePlane(kSide, 0.1);
    TileScratch scratch(kSide);
    ChromaRisk half;
    half.add(y, 0.5, blur, scratch, Cancellation());
    const ChromaRisk whole = riskOf(y, blur);
    EXPECT_NEAR(half.risk(0.1, 0), 2 * whole.risk(0.1, 0), 1e-12);
    EXPECT_NEAR(half.risk(0.1, 1) - half.risk(0.1, 0), whole.risk(0.1, 1) - whole.risk(0.1, 0),
                1e-12);
}

TEST(ChromaRisk, AddedRisksAreTheSumOfTheirParts) {
    const BlurSpectrum blur(unevenKernel(5, 3), kSide);
    const ChromaRisk first = riskOf(noisePlane(kSide, 0.1, 1), blur);
    const ChromaRisk second = riskOf(noisePlane(kSide, 0.3, 2), blur);
    ChromaRisk both;
    both.add(first);
    both.add(second);
    const double sum = first.risk(0.1, 0.01) + second.risk(0.1, 0.01);
    EXPECT_NEAR(both.risk(0.1, 0.01), sum, 1e-12);
    EXPECT_NEAR(both.gradientNoise(0.1, 0.01), first.gradientNoise(0.1, 0.01), 1e-12);
}

} // namespace
} // namespace restoration
