#include "restoration/clipping/ClipDetector.h"

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/clipping/LampScene.h"

#include <gtest/gtest.h>
#include <string>

namespace restoration {
namespace {

constexpr int kSide = 128;
constexpr Rect kWhole{0, 0, kSide, kSide};
constexpr float kNoise = 1.0f / 255.0f;
constexpr float kLeastClipped = 0.998f;

Kernel disc(float radius) {
    return analyticKernel(VELORN_BLUR_DISC, radius, 0.0f);
}

ClipDetector detector(const Kernel& kernel) {
    return {kernel, {1.0f, kLeastClipped, kNoise}};
}

Plane exposed(const Plane& scene, const Kernel& kernel, double noise) {
    Plane image = test::blurred(scene, kernel);
    test::expose(image, noise);
    return image;
}

std::size_t unknownPixels(const Mask& known) {
    std::size_t count = 0;
    for (int y = 0; y < kSide; ++y) {
        count += static_cast<std::size_t>(std::count(known.row(y), known.row(y) + kSide, 0));
    }
    return count;
}

/// Whether a pixel within the root of 5 is clipped.
bool isNearClipped(const Plane& image, int x, int y) {
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const int row = std::clamp(y + dy, 0, kSide - 1);
            const int column = std::clamp(x + dx, 0, kSide - 1);
            if (dx * dx + dy * dy <= 5 && image.row(row)[column] >= kLeastClipped) {
                return true;
            }
        }
    }
    return false;
}

TEST(ClipDetector, WhitePaperIsNotClipped) {
    for (const Kernel& kernel : {disc(3.0f), analyticKernel(VELORN_BLUR_MOTION, 15.0f, 30.0f),
                                 analyticKernel(VELORN_BLUR_GAUSSIAN, 1.5f, 0.0f)}) {
        const Plane image = exposed(test::printedPage(kSide, 1.0f), kernel, 1.0 / 255.0);
        EXPECT_GT(std::ranges::count(image.values(), 1.0f), kSide * kSide / 5);
        Mask known = test::allKnown(kSide);
        EXPECT_EQ(detector(kernel).mark(image, kWhole, known), 0u);
        EXPECT_EQ(unknownPixels(known), 0u);
    }
}

TEST(ClipDetector, TheClippedImageOfALampIsUnknownWithItsSurroundings) {
    Plane scene = test::darkScene(kSide);
    test::addLamp(scene, 40, 50, 1.5, 20.0f);
    const Plane image = exposed(scene, disc(3.0f), 1.0 / 255.0);
    const auto clipped = static_cast<std::size_t>(
        std::ranges::count_if(image.values(), [](float value) { return value >= kLeastClipped; }));
    EXPECT_GT(clipped, 30u);

    Mask known = test::allKnown(kSide);
    EXPECT_EQ(detector(disc(3.0f)).mark(image, kWhole, known), clipped);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            ASSERT_EQ(known.row(y)[x], isNearClipped(image, x, y) ? 0 : 1);
        }
    }
}

TEST(ClipDetector, AWhiteWallStaysKnownFarFromALampBeforeIt) {
    Plane scene = test::darkScene(kSide);
    for (int y = 0; y < kSide; ++y) {
        std::fill_n(scene.row(y) + 64, 50, 1.0f);
    }
    test::addLamp(scene, 62, 60, 2.5, 20.0f);
    const Plane image = exposed(scene, disc(3.0f), 0.0);
    Mask known = test::allKnown(kSide);
    EXPECT_GT(detector(disc(3.0f)).mark(image, kWhole, known), 20u);
    EXPECT_EQ(known.row(60)[61], 0);
    EXPECT_EQ(known.row(60)[90], 1);
    EXPECT_EQ(known.row(90)[70], 1);
}

TEST(ClipDetector, PixelsBeyondThePartAreNeitherReadNorMarked) {
    Plane scene = test::darkScene(kSide);
    test::addLamp(scene, 20, 22, 2.0, 20.0f);
    Plane image = exposed(scene, disc(3.0f), 1.0 / 255.0);
    const Rect part{18, 20, 60, 50};
    const auto isBeyond = [&](int x, int y) { return intersection({x, y, 1, 1}, part).isEmpty(); };
    Mask expected = test::allKnown(kSide);
    const std::size_t hidden = detector(disc(3.0f)).mark(image, part, expected);
    EXPECT_GT(hidden, 0u);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            if (isBeyond(x, y)) {
                ASSERT_EQ(expected.row(y)[x], 1);
                image.row(y)[x] = x % 2 == 0 ? 0.0f : 1.0f;
            }
        }
    }
    Mask known = test::allKnown(kSide);
    EXPECT_EQ(detector(disc(3.0f)).mark(image, part, known), hidden);
    for (int y = 0; y < kSide; ++y) {
        EXPECT_TRUE(std::equal(known.row(y), known.row(y) + kSide, expected.row(y)));
    }
}

/// The mean squared error of a restoration 5 to 12 pixels from a lamp.
double ringEnergy(const Plane& restored, const Plane& scene, double lampX, double lampY) {
    double sum = 0;
    int count = 0;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double distance = std::hypot(x - lampX, y - lampY);
            if (distance >= 5 && distance <= 12) {
                const float stored = std::clamp(restored.row(y)[x], 0.0f, 1.0f);
                const auto error = static_cast<double>(stored - scene.row(y)[x]);
                sum += error * error;
                ++count;
            }
        }
    }
    return sum / count;
}

TEST(ClipDetector, UnknownPixelsTakeAwayTheRingsAroundALamp) {
    const Kernel kernel = disc(3.0f);
    Plane scene = test::darkScene(kSide);
    test::addLamp(scene, 60, 70, 1.5, 15.0f);
    Plane image = exposed(scene, kernel, 0.3 / 255.0);
    const BlurSpectrum blur(kernel, kSide);
    TileScratch scratch(kSide);
    const Cancellation cancellation;
    const HyperLaplacian prior{4000.0f, 0.5f};

    Plane clipped = test::copyOf(image);
    Plane ringing(kSide, kSide);
    deconvolveHyperLaplacian(clipped, nullptr, blur, prior, ringing, scratch, cancellation);

    Mask known = test::allKnown(kSide);
    detector(kernel).mark(image, kWhole, known);
    Plane restored(kSide, kSide);
    estimateUnknown(image, known, blur, scratch, cancellation);
    deconvolveHyperLaplacian(image, &known, blur, prior, restored, scratch, cancellation);

    const double with = ringEnergy(restored, scene, 60, 70);
    const double without = ringEnergy(ringing, scene, 60, 70);
    RecordProperty("ratio", std::to_string(without / with));
    EXPECT_GT(without, 300 * with);
    EXPECT_GT(restored.row(70)[60], 1.0f);
}

} // namespace
} // namespace restoration
