#include "hosts/command/blind/TexturedCrop.h"

#include "tests/support/BlurredPicture.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using velorn::RgbPixels;
using velorn::texturedCrop;
using Bytes = std::vector<std::uint8_t>;

/// A grey picture with a chessboard in the square of 64 by 64 pixels at (x, y).
RgbPixels chessboardAt(int x, int y) {
    Bytes samples;
    for (int row = 0; row < 200; ++row) {
        for (int column = 0; column < 300; ++column) {
            const bool isInside = column >= x && column < x + 64 && row >= y && row < y + 64;
            const bool isLight = isInside && (column / 4 + row / 4) % 2 == 0;
            samples.insert(samples.end(), 3, isLight ? 200 : 100);
        }
    }
    return {300, 200, samples};
}

TEST(TexturedCrop, SmallPictureIsReturnedWhole) {
    const RgbPixels picture = vel::test::drawnPicture(60, 40);
    EXPECT_EQ(texturedCrop(picture, 64).samples, picture.samples);
}

TEST(TexturedCrop, SquareWithTheTextureIsFound) {
    const RgbPixels part = texturedCrop(chessboardAt(128, 96), 64);
    EXPECT_EQ(part.width, 64);
    EXPECT_EQ(part.height, 64);
    const auto& samples = std::get<Bytes>(part.samples);
    EXPECT_EQ(std::ranges::count(samples, 200), 64 * 64 * 3 / 2);
}

TEST(TexturedCrop, PictureLowerThanTheSquareKeepsItsHeight) {
    const RgbPixels part = texturedCrop(vel::test::drawnPicture(300, 20), 64);
    EXPECT_EQ(part.width, 64);
    EXPECT_EQ(part.height, 20);
}

TEST(TexturedCrop, SixteenBitPicturesKeepTheirDepth) {
    const RgbPixels wide{100, 10, std::vector<std::uint16_t>(3000, 4000)};
    const RgbPixels part = texturedCrop(wide, 30);
    EXPECT_FALSE(part.isEightBit());
    EXPECT_EQ(std::get<std::vector<std::uint16_t>>(part.samples).size(), 900u);
}

} // namespace
