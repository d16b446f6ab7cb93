#include "restoration/secondpass/measureBehindBlur.h"

#include "restoration/kernels/analyticKernel.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

Kernel disc() {
    return analyticKernel(VELORN_BLUR_DISC, 3.0f, 0.0f);
}

std::optional<float> measured(const VelornPicture& picture, PlaneLayout layout) {
    const TileLoader loader(PictureReader(picture), 512, {layout, true});
    return measureBehindBlur(noisePatches(loader), 0, disc());
}

/// Grey with normal noise of `noise` levels of 255.
std::unique_ptr<PictureBuffer> noisyGrey(const PictureShape& shape, float noise) {
    auto buffer = std::make_unique<PictureBuffer>(formatOf(shape));
    std::mt19937 random(4);
    std::normal_distribution<float> error(0.0f, 1.0f);
    std::vector<float> row(static_cast<std::size_t>(shape.width));
    for (int y = 0; y < shape.height; ++y) {
        for (int c = 0; c < shape.channels; ++c) {
            std::ranges::generate(row, [&] { return 0.5f + (noise / 255.0f) * error(random); });
            PictureWriter(buffer->picture()).writeChannel(c, y, 0, shape.width, row.data());
        }
    }
    return buffer;
}

TEST(MeasureBehindBlur, FindsTheNoiseOfAPlane) {
    for (const float noise : {1.0f, 4.0f}) {
        const auto grey = noisyGrey({700, 400, 1, false, VELORN_SAMPLES_F32}, noise);
        const std::optional<float> found = measured(grey->picture(), PlaneLayout::Channels);
        ASSERT_TRUE(found);
        EXPECT_NEAR(*found, noise, 0.08f * noise);
    }
}

TEST(MeasureBehindBlur, LuminanceHasTheNoiseOfTheWeightedSum) {
    const auto grey = noisyGrey({400, 500, 3, false, VELORN_SAMPLES_F32}, 3.0f);
    const std::optional<float> found = measured(grey->picture(), PlaneLayout::LuminanceChroma);
    ASSERT_TRUE(found);
    EXPECT_NEAR(*found, 3.0f * std::sqrt(0.299f * 0.299f + 0.587f * 0.587f + 0.114f * 0.114f),
                0.16f);
}

TEST(MeasureBehindBlur, SquaresWithUnknownPixelsAreLeftOut) {
    const auto grey = noisyGrey({192, 192, 1, false, VELORN_SAMPLES_F32}, 1.0f);
    const TileLoader loader(PictureReader(grey->picture()), 512, {PlaneLayout::Channels, true});
    std::vector<Patch> patches = noisePatches(loader);
    ASSERT_EQ(patches.size(), 1u);
    patches[0].tile.known.row(96)[96] = 0;
    EXPECT_FALSE(measureBehindBlur(patches, 0, disc()));
}

TEST(MeasureBehindBlur, PicturesSmallerThanASquareTellNothing) {
    const auto picture = texturedPicture({400, 100, 1, false, VELORN_SAMPLES_U8});
    EXPECT_FALSE(measured(picture->picture(), PlaneLayout::Channels));
    const auto pixel = texturedPicture({1, 1, 3});
    EXPECT_FALSE(measured(pixel->picture(), PlaneLayout::LuminanceChroma));
}

} // namespace
} // namespace restoration
