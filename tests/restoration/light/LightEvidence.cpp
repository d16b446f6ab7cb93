#include "restoration/light/LightEvidence.h"

#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/clipping/LampScene.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr int kSide = 256;
constexpr float kNoise = 0.7f;

enum class Blurred { Light, DisplayValues };

/// Bright bars of many lengths on a dark wall: strong edges, no clipped pixels.
Plane signs() {
    Plane scene = test::darkScene(kSide);
    std::mt19937 random(2);
    for (int sign = 0; sign < 60; ++sign) {
        const int x = static_cast<int>(random() % (kSide - 40));
        const int y = static_cast<int>(random() % (kSide - 24));
        const int width = 6 + static_cast<int>(random() % 34);
        const int height = 3 + static_cast<int>(random() % 20);
        const float light = 0.02f + 0.08f * static_cast<float>(random() % 11);
        for (int row = y; row < y + height; ++row) {
            std::fill_n(scene.row(row) + x, width, light);
        }
    }
    return scene;
}

std::unique_ptr<PictureBuffer> stored(const Kernel& kernel, Blurred blurred) {
    const ToneCurve curve = ToneCurve::sRgb();
    Plane scene = signs();
    if (blurred == Blurred::DisplayValues) {
        curve.toDisplay(scene.values());
    }
    Plane image = test::blurred(scene, kernel);
    if (blurred == Blurred::Light) {
        curve.toDisplay(image.values());
    }
    test::expose(image, static_cast<double>(kNoise) / 255.0);
    auto picture = std::make_unique<PictureBuffer>(formatOf({kSide, kSide, 1}));
    for (int y = 0; y < kSide; ++y) {
        PictureWriter(picture->picture()).writeChannel(0, y, 0, kSide, image.row(y));
    }
    return picture;
}

LightEvidence evidence(const PictureBuffer& picture, const Kernel& kernel, int threads = 1) {
    Team team(threads, {nullptr, nullptr});
    NoiseLevels noise;
    noise.channels.fill(std::hypot(kNoise, 0.29f));
    const Kernel* kernels[] = {&kernel};
    return lightEvidence(PictureReader(picture.picture()), kernels, ToneCurves(), noise, team);
}

TEST(LightEvidence, TellsBlurredLightFromBlurredDisplayValues) {
    for (const Kernel& kernel : {analyticKernel(VELORN_BLUR_DISC, 4.0f, 0.0f),
                                 analyticKernel(VELORN_BLUR_MOTION, 13.0f, 30.0f)}) {
        const LightEvidence light = evidence(*stored(kernel, Blurred::Light), kernel);
        EXPECT_TRUE(light.isForLight())
            << light.position << ' ' << light.contrast << ' ' << light.excess;
        const LightEvidence display = evidence(*stored(kernel, Blurred::DisplayValues), kernel);
        EXPECT_FALSE(display.isForLight())
            << display.position << ' ' << display.contrast << ' ' << display.excess;
        EXPECT_GT(display.position, light.position + 0.3f);
    }
}

TEST(LightEvidence, DoesNotDependOnTheNumberOfThreads) {
    const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    const auto picture = stored(kernel, Blurred::Light);
    const LightEvidence one = evidence(*picture, kernel, 1);
    const LightEvidence three = evidence(*picture, kernel, 3);
    EXPECT_EQ(one.position, three.position);
    EXPECT_EQ(one.contrast, three.contrast);
    EXPECT_EQ(one.excess, three.excess);
}

TEST(LightEvidence, APictureThatIsWhiteThroughoutSaysNothing) {
    const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    const PictureBuffer picture(formatOf({100, 100, 1}));
    const std::vector<float> row(100, 1.0f);
    for (int y = 0; y < 100; ++y) {
        PictureWriter(picture.picture()).writeChannel(0, y, 0, 100, row.data());
    }
    EXPECT_FALSE(evidence(picture, kernel).isForLight());
}

TEST(LightEvidence, AFlatPictureSaysNothing) {
    const Kernel kernel = analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
    const PictureBuffer picture(formatOf({100, 100, 1}));
    EXPECT_FALSE(evidence(picture, kernel).isForLight());
}

} // namespace
} // namespace restoration
