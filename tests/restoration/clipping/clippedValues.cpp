#include "restoration/clipping/clippedValues.h"

#include "restoration/pictures/PictureWriter.h"
#include "tests/restoration/pipeline/testPictures.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

std::unique_ptr<PictureBuffer> floats(int channels) {
    return texturedPicture({40, 30, channels, false, VELORN_SAMPLES_F32}, 1.0);
}

void set(const PictureBuffer& picture, int channel, int x, int y, float value) {
    PictureWriter(picture.picture()).writeChannel(channel, y, x, 1, &value);
}

void setSquare(const PictureBuffer& picture, int channel, int x, int y, float value) {
    for (int i = 0; i < 4; ++i) {
        set(picture, channel, x + i % 2, y + i / 2, value);
    }
}

std::optional<ClippedValues> valuesOf(const PictureBuffer& picture) {
    return clippedValues(PictureReader(picture.picture()), Cancellation());
}

TEST(ClippedValues, IntegersAreClippedWhereEightBitsAreWhite) {
    for (const VelornSamples samples : {VELORN_SAMPLES_U8, VELORN_SAMPLES_U16}) {
        const auto picture = texturedPicture({8, 8, 3, false, samples});
        const auto values = valuesOf(*picture);
        ASSERT_TRUE(values.has_value());
        EXPECT_EQ(values->white, 1.0f);
        EXPECT_GT(values->least, 254.0f / 255.0f);
        EXPECT_LT(values->least, 65500.0f / 65535.0f);
    }
}

TEST(ClippedValues, FloatsThatReachNoPlateauAreNotClipped) {
    const auto picture = floats(1);
    EXPECT_FALSE(valuesOf(*picture).has_value());
    set(*picture, 0, 7, 7, 3.0f);
    set(*picture, 0, 8, 7, 3.0f);
    set(*picture, 0, 7, 8, 3.0f);
    EXPECT_FALSE(valuesOf(*picture).has_value());
}

TEST(ClippedValues, APlateauAtTheLargestFloatIsClipped) {
    const auto picture = floats(3);
    for (const float white : {1.0f, 4.0f}) {
        setSquare(*picture, 1, 20, 9, white);
        const auto values = valuesOf(*picture);
        ASSERT_TRUE(values.has_value());
        EXPECT_EQ(values->white, white);
        EXPECT_LT(values->least, white);
        EXPECT_GT(values->least, 0.99f * white);
    }
    set(*picture, 2, 3, 3, 4.5f);
    EXPECT_FALSE(valuesOf(*picture).has_value());
}

TEST(ClippedValues, APlateauBelowWhiteIsNotClipped) {
    const auto picture = floats(1);
    setSquare(*picture, 0, 20, 9, 0.97f);
    EXPECT_FALSE(valuesOf(*picture).has_value());
}

} // namespace
} // namespace restoration
