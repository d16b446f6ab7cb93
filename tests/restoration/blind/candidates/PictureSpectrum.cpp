#include "restoration/blind/candidates/PictureSpectrum.h"

#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <utility>

namespace restoration {
namespace {

constexpr int kSide = 256;

/// The fit of `kernel` to the spectrum of a drawn scene that `blur` has blurred.
SpectrumFit fit(const SquareKernel& kernel, const WholeKernel& blur) {
    const Cancellation cancellation;
    const Plane picture = blurredPicture(DrawnScene(220, 200, 51), blur, 2, 1);
    // Uniform noise of -2..2 levels.
    const PictureSpectrum spectrum(picture, kSide, std::sqrt(2.0), cancellation);
    const Kernel weights{kernel.side, kernel.side, {kernel.values.begin(), kernel.values.end()}};
    return spectrum.fitOf(BlurSpectrum(weights, kSide), cancellation);
}

TEST(PictureSpectrum, TrueKernelIsLikelierThanOthers) {
    for (const auto& [blur, other] :
         {std::pair(line11(), discOfRadius3()), std::pair(discOfRadius3(), line11())}) {
        const SpectrumFit truth = fit(blur.scaled(), blur);
        const SpectrumFit wrong = fit(other.scaled(), blur);
        EXPECT_LT(truth.unlikelihood, wrong.unlikelihood);
        EXPECT_LT(truth.unevenness, wrong.unevenness);
    }
}

TEST(PictureSpectrum, DoesNotSeeTheOrientationOfAKernel) {
    SquareKernel turned = hook().scaled();
    std::ranges::reverse(turned.values);
    EXPECT_NEAR(fit(turned, hook()).unlikelihood, fit(hook().scaled(), hook()).unlikelihood, 1e-4);
}

} // namespace
} // namespace restoration
