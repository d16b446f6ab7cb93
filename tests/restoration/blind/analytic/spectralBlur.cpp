#include "restoration/blind/analytic/spectralBlur.h"

#include "restoration/blind/analytic/kernelOfKind.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace restoration {
namespace {

using Shape = KernelKind::Shape;

WholeKernel wholeKernel(const SquareKernel& kernel) {
    WholeKernel whole(kernel.side);
    std::ranges::transform(kernel.values, whole.weights.begin(),
                           [](double value) { return std::llround(1e6 * value); });
    return whole;
}

std::optional<KernelKind> foundIn(const Plane& picture) {
    return spectralBlur(picture, 71.0, Cancellation());
}

std::optional<KernelKind> foundFor(const WholeKernel& kernel, std::uint32_t seed) {
    return foundIn(blurredPicture(DrawnScene(360, 330, seed), kernel, 1, seed + 1));
}

TEST(SpectralBlur, FindsDiscs) {
    for (const float radius : {2.5f, 4.2f, 9.0f}) {
        const auto found = foundFor(wholeKernel(kernelOfKind({Shape::Disc, radius, 0.0f})), 31);
        ASSERT_TRUE(found) << radius;
        EXPECT_EQ(found->shape, Shape::Disc) << radius;
        EXPECT_NEAR(found->extent, radius, 0.1f);
    }
}

TEST(SpectralBlur, FindsMotionsInAllDirections) {
    for (const float angle : {0.0f, 90.0f, -45.0f, 20.0f, -70.0f}) {
        for (const float length : {9.0f, 23.0f, 41.0f}) {
            const auto found =
                foundFor(wholeKernel(kernelOfKind({Shape::Motion, length, angle})), 32);
            ASSERT_TRUE(found) << length << " at " << angle;
            EXPECT_EQ(found->shape, Shape::Motion);
            EXPECT_NEAR(found->extent, length, 0.4f) << angle;
            const float turn = undirectedAngle(found->angle - angle);
            EXPECT_LT(std::abs(turn) * length, 25.0f) << length << " at " << angle;
        }
    }
}

TEST(SpectralBlur, FindsGaussians) {
    for (const float sigma : {1.2f, 2.0f, 3.5f}) {
        const auto found = foundFor(wholeKernel(kernelOfKind({Shape::Gaussian, sigma, 0.0f})), 34);
        ASSERT_TRUE(found) << sigma;
        EXPECT_EQ(found->shape, Shape::Gaussian) << sigma;
        EXPECT_NEAR(found->extent, sigma, 0.15f * sigma);
    }
}

TEST(SpectralBlur, FindsNoBlurThatIsNone) {
    EXPECT_FALSE(foundFor(hook(), 33));
    WholeKernel point(1);
    point.at(0, 0) = 1;
    EXPECT_FALSE(foundFor(point, 35));
}

TEST(SpectralBlur, GaussiansOfUnequalAxesAreNone) {
    WholeKernel kernel(21);
    for (int row = 0; row < 21; ++row) {
        for (int column = 0; column < 21; ++column) {
            const double right = (column - 10) / 3.0;
            const double down = (row - 10) / 1.5;
            kernel.at(row, column) =
                std::llround(1e6 * std::exp(-0.5 * (right * right + down * down)));
        }
    }
    EXPECT_FALSE(foundFor(kernel, 39));
}

TEST(SpectralBlur, FindsNoneInFlatAndTinyPictures) {
    Plane flat(200, 100);
    std::ranges::fill(flat.values(), 0.5f);
    EXPECT_FALSE(foundIn(flat));
    EXPECT_FALSE(foundIn(DrawnScene(32, 33, 36).plane()));
}

TEST(SpectralBlur, FindsNoneThatIsLargerThanAllowed) {
    const WholeKernel kernel = wholeKernel(kernelOfKind({Shape::Motion, 41.0f, 30.0f}));
    const Plane picture = blurredPicture(DrawnScene(360, 330, 37), kernel, 1, 38);
    ASSERT_TRUE(spectralBlur(picture, 71.0, Cancellation()));
    EXPECT_FALSE(spectralBlur(picture, 31.0, Cancellation()));
}

} // namespace
} // namespace restoration
