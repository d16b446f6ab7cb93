#include "restoration/deconvolution/taperEdges.h"

#include "CircularScene.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/tiles/joinEdges.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr int kSide = 128;
constexpr int kLength = 15;
constexpr int kWindow = kSide - kLength + 1; // not the period of the scene: opposite edges differ

/// Straight motion along the diagonal.
Kernel motionKernel() {
    Kernel kernel{kLength, kLength, std::vector<float>(std::size_t{kLength * kLength}, 0.0f)};
    for (std::size_t i = 0; i < kLength; ++i) {
        kernel.values[i * (kLength + 1)] = 1.0f / kLength;
    }
    return kernel;
}

Plane joinedTile(const Plane& blurredScene) {
    Plane y = test::copyOf(blurredScene);
    joinEdges(y, kWindow, kWindow);
    return y;
}

TEST(TaperEdges, LeavesTheMiddleOfTheWindow) {
    const Plane scene = test::circularScene(kSide);
    Plane y = joinedTile(scene);
    TileScratch scratch(kSide);
    taperEdges(y, kWindow, kWindow, BlurSpectrum(motionKernel(), kSide), scratch, Cancellation());
    for (int row = 8; row < kWindow - 8; ++row) {
        for (int x = 8; x < kWindow - 8; ++x) {
            ASSERT_EQ(y.row(row)[x], scene.row(row)[x]);
        }
    }
    EXPECT_NE(y.row(50)[0], scene.row(50)[0]);
}

Plane restored(Plane& y, const BlurSpectrum& blur) {
    TileScratch scratch(kSide);
    Plane x(kSide, kSide);
    deconvolveHyperLaplacian(y, nullptr, blur, {4000.0f, 0.5f}, x, scratch, Cancellation());
    return x;
}

double squaredErrorInTheMiddle(const Plane& a, const Plane& b) {
    double sum = 0;
    for (int row = 30; row < kWindow - 30; ++row) {
        for (int x = 30; x < kWindow - 30; ++x) {
            const auto difference = static_cast<double>(a.row(row)[x] - b.row(row)[x]);
            sum += difference * difference;
        }
    }
    return sum;
}

TEST(TaperEdges, ReducesTheRingingOfTheSeam) {
    const Kernel kernel = motionKernel();
    const BlurSpectrum blur(kernel, kSide);
    Plane seen = test::blurred(test::circularScene(kSide), kernel);
    const Plane seamless = restored(seen, blur);
    Plane joined = joinedTile(seen);
    const double before = squaredErrorInTheMiddle(restored(joined, blur), seamless);
    TileScratch scratch(kSide);
    taperEdges(joined, kWindow, kWindow, blur, scratch, Cancellation());
    const double after = squaredErrorInTheMiddle(restored(joined, blur), seamless);
    EXPECT_LT(after, 0.5 * before);
}

} // namespace
} // namespace restoration
