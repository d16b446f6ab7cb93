#include "restoration/chroma/chooseChroma.h"

#include "noisyScene.h"
#include "restoration/deconvolution/deconvolveQuadratic.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace restoration {
namespace {

using test::copyOf;

constexpr int kSide = 256;
constexpr float kAutomatic = VELORN_AUTOMATIC;

const Kernel& disc() {
    static const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    return kernel;
}

const BlurSpectrum& blur() {
    static const BlurSpectrum spectrum(disc(), kSide);
    return spectrum;
}

/// A patch whose chroma planes are blurred scenes with noise; all pixels known.
Patch noisyPatch(double level) {
    Patch patch;
    patch.tile.side = kSide;
    patch.kept = patch.tile.window = {0, 0, kSide, kSide};
    patch.tile.known = Mask(kSide, kSide);
    std::fill_n(patch.tile.known.row(0), kSide * kSide, std::uint8_t{1});
    for (unsigned i = 0; i < 3; ++i) {
        Plane& plane =
            patch.tile.planes.emplace_back(test::blurred(test::circularScene(kSide), disc()));
        test::addNoise(plane, level / 255, i);
    }
    return patch;
}

std::vector<Patch> noisyPatches(double level) {
    std::vector<Patch> patches;
    patches.push_back(noisyPatch(level));
    return patches;
}

NoiseLevels levels(float chroma, float luminance = 0.0f) {
    NoiseLevels noise;
    noise.luminance = luminance;
    noise.chromaBlue = noise.chromaRed = chroma;
    return noise;
}

ChromaPriors chosen(const std::vector<Patch>& patches, const NoiseLevels& noise,
                    float strength = kAutomatic, int threads = 2) {
    Team team(threads, {nullptr, nullptr});
    return chooseChroma(patches, blur(), noise, strength, team);
}

/// The error of the restoration, blurred again, from row and column `first` on: what the risk
/// estimates.
double blurredError(const Plane& y, const Plane& truth, double weight, int first = 0) {
    TileScratch scratch(kSide);
    Plane x(kSide, kSide);
    deconvolveQuadratic(y, blur(), static_cast<float>(weight), nullptr, x, scratch, Cancellation());
    const Plane again = test::blurred(x, disc());
    double sum = 0;
    for (int row = first; row < kSide; ++row) {
        for (int column = first; column < kSide; ++column) {
            const auto error = static_cast<double>(again.row(row)[column] - truth.row(row)[column]);
            sum += error * error;
        }
    }
    return sum;
}

double leastBlurredError(const Plane& y, const Plane& truth, int first = 0) {
    double least = std::numeric_limits<double>::infinity();
    for (double weight = 1e-3; weight < 10; weight *= 2) {
        least = std::min(least, blurredError(y, truth, weight, first));
    }
    return least;
}

TEST(ChooseChroma, TheWeightIsNearlyTheBestForThePlanes) {
    const Plane truth = test::blurred(test::circularScene(kSide), disc());
    for (const float level : {0.7f, 4.0f}) {
        const std::vector<Patch> patches = noisyPatches(static_cast<double>(level));
        const ChromaPriors priors = chosen(patches, levels(level));
        EXPECT_EQ(priors[0].weight, priors[1].weight);
        const double least = leastBlurredError(patches[0].tile.planes[1], truth);
        const auto weight = static_cast<double>(priors[0].weight);
        EXPECT_LT(blurredError(patches[0].tile.planes[1], truth, weight), 1.06 * least) << level;
    }
}

TEST(ChooseChroma, MoreNoiseGivesMoreWeight) {
    float last = 0.0f;
    for (const float level : {0.5f, 2.0f, 8.0f}) {
        const ChromaPriors priors = chosen(noisyPatches(static_cast<double>(level)), levels(level));
        EXPECT_GT(priors[0].weight, 2 * last);
        last = priors[0].weight;
    }
}

TEST(ChooseChroma, TheWeightSuitsBothPlanesTogether) {
    std::vector<Patch> patches = noisyPatches(1);
    const float alike = chosen(patches, levels(1.0f))[0].weight;
    for (const std::size_t noisy : {1u, 2u}) {
        std::vector<Patch> other = noisyPatches(1);
        test::addNoise(other[0].tile.planes[noisy], 10.0 / 255, 9);
        NoiseLevels noise = levels(1.0f);
        (noisy == 1 ? noise.chromaBlue : noise.chromaRed) = 10.0f;
        EXPECT_GT(chosen(other, noise)[0].weight, 2 * alike) << noisy;
    }
}

TEST(ChooseChroma, NoisyLuminanceMakesChromaNoisy) {
    const std::vector<Patch> patches = noisyPatches(0.5);
    EXPECT_GT(chosen(patches, levels(0.5f, 5.0f))[0].weight,
              4 * chosen(patches, levels(0.5f, 0.5f))[0].weight);
}

TEST(ChooseChroma, AGivenStrengthFixesTheWeight) {
    const std::vector<Patch> patches = noisyPatches(2);
    const ChromaPriors own = chosen(patches, levels(2.0f));
    const ChromaPriors given = chosen(patches, levels(2.0f), 1.0f / own[0].weight);
    for (std::size_t i = 0; i < own.size(); ++i) {
        EXPECT_EQ(given[i].weight, own[i].weight);
        EXPECT_EQ(given[i].gradientNoise, own[i].gradientNoise);
    }
    EXPECT_EQ(chosen(patches, levels(2.0f), 4.0f)[1].weight, 0.25f);
}

TEST(ChooseChroma, UnknownPixelsAreEstimatedFirst) {
    constexpr int kUnknown = 24;
    std::vector<Patch> patches = noisyPatches(2);
    Tile& tile = patches[0].tile;
    tile.isIncomplete = true;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            if (x < kUnknown || y < kUnknown) {
                tile.known.row(y)[x] = 0;
                tile.planes[1].row(y)[x] = tile.planes[2].row(y)[x] = 0.5f;
            }
        }
    }
    const auto weight = static_cast<double>(chosen(patches, levels(2.0f))[0].weight);
    const Plane truth = test::blurred(test::circularScene(kSide), disc());
    Plane& y = tile.planes[1];
    TileScratch scratch(kSide);
    estimateUnknown(y, tile.known, blur(), scratch, Cancellation());
    EXPECT_LT(blurredError(y, truth, weight, kUnknown),
              1.1 * leastBlurredError(y, truth, kUnknown));
}

TEST(ChooseChroma, TheChoiceDoesNotDependOnTheNumberOfThreads) {
    std::vector<Patch> patches = noisyPatches(2);
    patches.push_back(noisyPatch(1));
    patches.push_back(noisyPatch(4));
    const ChromaPriors one = chosen(patches, levels(2.0f), kAutomatic, 1);
    const ChromaPriors many = chosen(patches, levels(2.0f), kAutomatic, 5);
    for (std::size_t i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one[i].weight, many[i].weight);
        EXPECT_EQ(one[i].gradientNoise, many[i].gradientNoise);
    }
}

TEST(ChooseChroma, PlanesThatAreNotFiniteGetAUsualWeight) {
    std::vector<Patch> patches = noisyPatches(2);
    for (Plane& plane : patches[0].tile.planes) {
        plane.row(0)[0] = std::numeric_limits<float>::quiet_NaN();
    }
    EXPECT_EQ(chosen(patches, levels(2.0f))[0].weight, 0.01f);
}

} // namespace
} // namespace restoration
