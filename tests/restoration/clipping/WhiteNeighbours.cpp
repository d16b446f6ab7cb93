#include "restoration/clipping/WhiteNeighbours.h"

#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/clipping/LampScene.h"

#include <gtest/gtest.h>
#include <random>

namespace restoration {
namespace {

float leastAt(const WhiteNeighbours& white, int x, int y) {
    for (const WhiteNeighbours::Neighbour& neighbour : white.neighbours()) {
        if (neighbour.x == x && neighbour.y == y) {
            return neighbour.least;
        }
    }
    return 0.0f;
}

TEST(WhiteNeighbours, NeighboursShareTheOverlapOfTheShiftedKernel) {
    const Kernel box{3, 3, std::vector<float>(9, 1.0f / 9.0f)};
    const WhiteNeighbours white(box, 0.0f);
    EXPECT_FLOAT_EQ(leastAt(white, 1, 0), 6.0f / 9.0f);
    EXPECT_FLOAT_EQ(leastAt(white, -1, 1), 4.0f / 9.0f);
    EXPECT_FLOAT_EQ(leastAt(white, 0, 2), 3.0f / 9.0f);
    EXPECT_FLOAT_EQ(leastAt(white, 2, -1), 2.0f / 9.0f);
    EXPECT_EQ(leastAt(white, 2, 2), 0.0f); // farther than the root of 5
}

TEST(WhiteNeighbours, AToleranceLowersTheLimits) {
    const Kernel box{3, 3, std::vector<float>(9, 1.0f / 9.0f)};
    EXPECT_NEAR(leastAt(WhiteNeighbours(box, 0.1f), 1, 0), 6.0f / 9.0f - 0.1f, 1e-6f);
    // Weights there and here: 0.4 and 0.1, 0.5 and 0.4. The tolerance takes all of the first and a
    // quarter of the second.
    const Kernel step{3, 1, {0.1f, 0.4f, 0.5f}};
    EXPECT_NEAR(leastAt(WhiteNeighbours(step, 0.2f), 1, 0), 0.75f * 0.5f, 1e-6f);
}

TEST(WhiteNeighbours, NoSceneWithoutExcessLightHasDarkerNeighbours) {
    constexpr int kSide = 64;
    constexpr float kTolerance = 0.02f;
    std::mt19937 random(1);
    const auto place = [&random] { return static_cast<double>(random() % kSide); };
    int whitePixels = 0;
    for (const Kernel& kernel :
         {analyticKernel(VELORN_BLUR_DISC, 2.5f, 0.0f), test::unevenKernel(5, 3),
          analyticKernel(VELORN_BLUR_MOTION, 7.0f, 20.0f),
          analyticKernel(VELORN_BLUR_GAUSSIAN, 1.0f, 0.0f)}) {
        // White blots on black: the darkest surroundings that white can have.
        Plane scene(kSide, kSide);
        std::ranges::fill(scene.values(), 0.0f);
        for (int blot = 0; blot < 12; ++blot) {
            test::addLamp(scene, place(), place(), 2.0 + blot % 6, 1.0f);
        }
        const Plane image = test::blurred(scene, kernel);
        const WhiteNeighbours white(kernel, kTolerance);
        for (int y = 4; y < kSide - 4; ++y) {
            for (int x = 4; x < kSide - 4; ++x) {
                if (image.row(y)[x] < 1.0f - kTolerance) {
                    continue;
                }
                ++whitePixels;
                for (const WhiteNeighbours::Neighbour& neighbour : white.neighbours()) {
                    ASSERT_GE(image.row(y + neighbour.y)[x + neighbour.x], neighbour.least - 1e-5f);
                }
            }
        }
    }
    EXPECT_GT(whitePixels, 500);
}

} // namespace
} // namespace restoration
