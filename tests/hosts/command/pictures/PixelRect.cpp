#include "hosts/command/pictures/PixelRect.h"

#include <gtest/gtest.h>

namespace {

using velorn::crop;
using velorn::PixelRect;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;

/// 2 by 2 pixels, each with three different samples.
const RgbPixels kFour{2, 2, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};

TEST(PixelRect, ContainsItsLeftAndTopEdgeOnly) {
    const PixelRect rect{2, 3, 4, 5};
    EXPECT_TRUE(rect.contains(2, 3));
    EXPECT_TRUE(rect.contains(5, 7));
    EXPECT_FALSE(rect.contains(6, 7));
    EXPECT_FALSE(rect.contains(5, 8));
    EXPECT_FALSE(rect.contains(1, 3));
    EXPECT_FALSE(rect.contains(2, 2));
    EXPECT_EQ(rect.area(), 20.0);
}

TEST(PixelRect, CropTakesTheInsideOfTheRectangle) {
    EXPECT_EQ(crop(kFour, {0, 0, 2, 2}).samples, kFour.samples);
    const RgbPixels right = crop(kFour, {1, 0, 1, 2});
    EXPECT_EQ(right.width, 1);
    EXPECT_EQ(right.height, 2);
    EXPECT_EQ(std::get<Bytes>(right.samples), (Bytes{4, 5, 6, 10, 11, 12}));
}

TEST(PixelRect, CropRepeatsTheNearestBorderPixelOutside) {
    const RgbPixels wide = crop(kFour, {-1, 1, 4, 2});
    EXPECT_EQ(std::get<Bytes>(wide.samples), (Bytes{7, 8, 9, 7, 8, 9, 10, 11, 12, 10, 11, 12, //
                                                    7, 8, 9, 7, 8, 9, 10, 11, 12, 10, 11, 12}));
}

TEST(PixelRect, CropKeepsTheDepth) {
    const RgbPixels wide{1, 1, std::vector<std::uint16_t>{1, 2, 40000}};
    EXPECT_EQ(crop(wide, {0, 0, 1, 1}).samples, wide.samples);
}

} // namespace
