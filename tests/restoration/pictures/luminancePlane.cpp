#include "restoration/pictures/luminancePlane.h"

#include <gtest/gtest.h>
#include <vector>

namespace restoration {
namespace {

/// The luminance of a picture of 70 rows whose pixels are `pixel`.
float luminanceOf(const std::vector<float>& pixel, bool hasAlpha = false) {
    constexpr int kWidth = 5;
    constexpr int kHeight = 70;
    std::vector<float> samples;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        samples.insert(samples.end(), pixel.begin(), pixel.end());
    }
    VelornPicture picture{};
    picture.data = samples.data();
    picture.width = kWidth;
    picture.height = kHeight;
    picture.channels = static_cast<int>(pixel.size());
    picture.rowStride = static_cast<std::ptrdiff_t>(sizeof(float) * pixel.size()) * kWidth;
    picture.hasAlpha = hasAlpha;
    picture.samples = VELORN_SAMPLES_F32;
    Team team(2, {});
    const Plane luminance = luminancePlane(PictureReader(picture), team);
    EXPECT_EQ(luminance.width(), kWidth);
    EXPECT_EQ(luminance.height(), kHeight);
    for (const float value : luminance.values()) {
        EXPECT_EQ(value, luminance.row(0)[0]);
    }
    return luminance.row(0)[0];
}

TEST(LuminancePlane, IsTheOnlyChannel) {
    EXPECT_EQ(luminanceOf({0.25f}), 0.25f);
    EXPECT_EQ(luminanceOf({0.25f, 0.9f}, true), 0.25f);
}

TEST(LuminancePlane, WeighsThreeChannels) {
    EXPECT_FLOAT_EQ(luminanceOf({1.0f, 0.0f, 0.0f}), 0.299f);
    EXPECT_FLOAT_EQ(luminanceOf({0.0f, 1.0f, 0.0f}), 0.587f);
    EXPECT_FLOAT_EQ(luminanceOf({0.0f, 0.0f, 1.0f, 0.7f}, true), 0.114f);
}

TEST(LuminancePlane, IsTheMeanOfTwoAndFourChannels) {
    EXPECT_FLOAT_EQ(luminanceOf({0.2f, 0.6f}), 0.4f);
    EXPECT_FLOAT_EQ(luminanceOf({0.1f, 0.2f, 0.3f, 0.8f}), 0.35f);
}

} // namespace
} // namespace restoration
