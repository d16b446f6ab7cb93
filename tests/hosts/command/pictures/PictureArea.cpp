#include "hosts/command/pictures/PictureArea.h"

#include <gtest/gtest.h>

namespace {

using velorn::asShown;
using velorn::asStored;
using velorn::PictureArea;

constexpr int kWidth = 60;
constexpr int kHeight = 40;

TEST(PictureArea, IsShownWhereItsCornersAre) {
    const PictureArea stored{5, 7, 20, 10};
    EXPECT_EQ(asShown(stored, 1, kWidth, kHeight), stored);
    EXPECT_EQ(asShown(stored, 2, kWidth, kHeight), (PictureArea{35, 7, 20, 10}));  // mirrored
    EXPECT_EQ(asShown(stored, 3, kWidth, kHeight), (PictureArea{35, 23, 20, 10})); // a half turn
    // A quarter turn clockwise: the bottom rows become the left columns.
    EXPECT_EQ(asShown(stored, 6, kHeight, kWidth), (PictureArea{23, 5, 10, 20}));
    EXPECT_EQ(asShown(stored, 8, kHeight, kWidth), (PictureArea{7, 35, 10, 20}));
}

TEST(PictureArea, StoredIsTheInverseOfShown) {
    const PictureArea stored{5, 7, 20, 10};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const bool isTurned = orientation >= 5;
        const PictureArea shown =
            asShown(stored, orientation, isTurned ? kHeight : kWidth, isTurned ? kWidth : kHeight);
        EXPECT_EQ(asStored(shown, orientation, kWidth, kHeight), stored) << orientation;
    }
}

TEST(PictureArea, IsInsideUpToTheLastPixel) {
    EXPECT_TRUE((PictureArea{0, 0, 60, 40}.isInside(60, 40)));
    EXPECT_TRUE((PictureArea{59, 39, 1, 1}.isInside(60, 40)));
    EXPECT_FALSE((PictureArea{1, 0, 60, 40}.isInside(60, 40)));
    EXPECT_FALSE((PictureArea{0, 1, 60, 40}.isInside(60, 40)));
    EXPECT_FALSE((PictureArea{-1, 0, 5, 5}.isInside(60, 40)));
    EXPECT_FALSE((PictureArea{2000000000, 0, 2000000000, 5}.isInside(60, 40)));
}

} // namespace
