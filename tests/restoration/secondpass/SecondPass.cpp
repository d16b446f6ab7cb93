#include "restoration/secondpass/SecondPass.h"

#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "tests/restoration/deconvolution/CircularScene.h"
#include "tests/support/EachTarget.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace restoration {
namespace {

using test::blurred;
using test::circularScene;
using test::copyOf;
using test::distance;
using test::largestDifference;
using test::unevenKernel;

using Effort = SecondPass::Effort;

constexpr float kNoise = 1.5f; // levels of 255

/// A blurred and noisy scene and its first restoration.
struct Scene {
    explicit Scene(int side = 128)
        : sharp(circularScene(side)), kernel(unevenKernel(5, 7)), blur(kernel, side),
          seen(blurred(sharp, kernel)), first(side, side), scratch(side) {
        std::mt19937 random(9);
        std::normal_distribution<float> error(0.0f, kNoise / 255.0f);
        for (float& value : seen.values()) {
            value += error(random);
        }
        Plane y = copyOf(seen);
        deconvolveHyperLaplacian(y, nullptr, blur, {2000.0f, 0.5f}, first, scratch, Cancellation());
    }

    Plane improved(float noise = kNoise, Effort effort = Effort::Full) {
        Plane x = copyOf(first);
        SecondPass(kernel, {noise}, effort).improve(seen, blur, x, scratch, filter, Cancellation());
        return x;
    }

    Plane sharp;
    Kernel kernel;
    BlurSpectrum blur;
    Plane seen;
    Plane first;
    TileScratch scratch;
    DctFilter filter;
};

TEST(SecondPass, ImprovesARestoration) {
    Scene scene;
    const double before = distance(scene.first, scene.sharp);
    EXPECT_LT(distance(scene.improved(kNoise, Effort::Quick), scene.sharp), 0.9 * before);
    EXPECT_LT(distance(scene.improved(kNoise, Effort::Full), scene.sharp), 0.85 * before);
}

TEST(SecondPass, KeepsFineDetailThatIsAboveTheNoise) {
    // Stripes of period 4 that the kernel weakens but does not remove.
    Scene scene;
    Plane stripes = circularScene(128);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            stripes.row(y)[x] = (x / 2) % 2 == 0 ? 0.3f : 0.7f;
        }
    }
    const Kernel kernel{3, 1, {0.25f, 0.5f, 0.25f}};
    const BlurSpectrum blur(kernel, 128);
    const Plane seen = blurred(stripes, kernel);
    Plane x = copyOf(seen);
    SecondPass(kernel, {0.5f}, Effort::Full)
        .improve(seen, blur, x, scene.scratch, scene.filter, Cancellation());
    EXPECT_LT(distance(x, stripes), 0.25 * distance(seen, stripes));
}

TEST(SecondPass, NoiseOfAFlatPlaneIsNotAmplified) {
    Scene scene;
    Plane flat(128, 128);
    std::ranges::fill(flat.values(), 0.5f);
    std::mt19937 random(11);
    std::normal_distribution<float> error(0.0f, kNoise / 255.0f);
    for (std::size_t i = 0; i < flat.values().size(); ++i) {
        scene.seen.values()[i] = 0.5f + error(random);
    }
    scene.first = copyOf(flat);
    EXPECT_LT(distance(scene.improved(), flat), 0.08 * distance(scene.seen, flat));
}

TEST(SecondPass, MemoryOfEarlierTilesDoesNotMatter) {
    Scene scene;
    const Plane once = scene.improved();
    EXPECT_EQ(largestDifference(scene.improved(), once), 0.0);
    Scene other;
    EXPECT_EQ(largestDifference(other.improved(), once), 0.0);
}

TEST(SecondPass, ShiftByTheStepOfTheBlocksShiftsTheResult) {
    constexpr int kSide = 64;
    Scene scene(kSide);
    const Plane straight = scene.improved();
    const auto moved = [](const Plane& plane) {
        Plane result(kSide, kSide);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                result.row((y + 10) % kSide)[(x + 22) % kSide] = plane.row(y)[x];
            }
        }
        return result;
    };
    scene.seen = moved(scene.seen);
    scene.first = moved(scene.first);
    // A coefficient at a threshold may fall to either side.
    EXPECT_LT(distance(scene.improved(), moved(straight)), 1e-3);
}

TEST(SecondPass, AnyNoiseGivesFiniteResults) {
    Scene scene(64);
    for (const float noise : {0.0f, -1.0f, 1e-30f, 1e30f, std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN()}) {
        const Plane x = scene.improved(noise);
        for (const float value : x.values()) {
            ASSERT_TRUE(std::isfinite(value)) << noise;
        }
    }
}

TEST(SecondPass, ImpossibleKernelsAndPixelsEnd) {
    Scene scene(64);
    scene.seen.row(3)[5] = std::numeric_limits<float>::quiet_NaN();
    scene.improved();
    scene.kernel.values[4] = std::numeric_limits<float>::infinity();
    scene.improved();
}

TEST(SecondPass, AllVariantsGiveTheSameBits) {
    std::vector<float> expected;
    vel::test::forEachTarget([&] {
        Scene scene(64);
        const Plane quick = scene.improved(kNoise, Effort::Quick);
        const Plane full = scene.improved(kNoise, Effort::Full);
        std::vector<float> found(quick.values().begin(), quick.values().end());
        found.insert(found.end(), full.values().begin(), full.values().end());
        if (expected.empty()) {
            expected = found;
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(SecondPass, CancelledCallFails) {
    Scene scene(64);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(SecondPass(scene.kernel, {kNoise}, Effort::Full)
                     .improve(scene.seen, scene.blur, scene.first, scene.scratch, scene.filter,
                              cancellation),
                 Failure);
}

} // namespace
} // namespace restoration
