#include "restoration/light/noiseInLight.h"

#include "restoration/pictures/PictureWriter.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

/// A picture whose left half has one value and whose right half another.
std::unique_ptr<PictureBuffer> halves(int channels, float left, float right) {
    auto picture =
        std::make_unique<PictureBuffer>(formatOf({80, 50, channels, false, VELORN_SAMPLES_F32}));
    std::vector<float> row(80, left);
    std::fill(row.begin() + 40, row.end(), right);
    for (int y = 0; y < 50; ++y) {
        for (int c = 0; c < channels; ++c) {
            PictureWriter(picture->picture()).writeChannel(c, y, 0, 80, row.data());
        }
    }
    return picture;
}

NoiseLevels inLight(const PictureBuffer& picture, const NoiseLevels& stored) {
    return noiseInLight(PictureReader(picture.picture()), ToneCurves(), stored);
}

TEST(NoiseInLight, IsTheRootMeanSquareOverThePictureWithAMargin) {
    NoiseLevels stored;
    stored.luminance = 2.0f;
    stored.channels[0] = 2.0f;
    // Slopes of sRGB: 1 / 12.92 in the dark, 2.4 / 1.055 at white.
    const double meanSquare = (1 / (12.92 * 12.92) + 2.4 * 2.4 / (1.055 * 1.055)) / 2;
    const NoiseLevels light = inLight(*halves(1, 0.01f, 1.0f), stored);
    EXPECT_NEAR(light.luminance, 1.2 * 2.0 * std::sqrt(meanSquare), 1e-2);
    EXPECT_NEAR(light.channels[0], light.luminance, 1e-4);
}

TEST(NoiseInLight, LuminanceAndChromaFollowTheirChannels) {
    NoiseLevels stored;
    stored.luminance = 1.0f;
    stored.chromaBlue = 0.5f;
    stored.chromaRed = 0.25f;
    stored.channels = {1.0f, 1.0f, 1.0f, 0.0f};
    const NoiseLevels light = inLight(*halves(3, 1.0f, 1.0f), stored);
    const double slope = 2.4 / 1.055;
    EXPECT_NEAR(light.luminance, 1.2 * slope, 1e-2);
    EXPECT_NEAR(light.chromaBlue, 0.5 * 1.2 * slope, 1e-2);
    EXPECT_NEAR(light.chromaRed, 0.25 * 1.2 * slope, 1e-2);
    EXPECT_NEAR(light.channels[2], 1.2 * slope, 1e-2);
    EXPECT_EQ(light.channels[3], 0.0f);
}

} // namespace
} // namespace restoration
