#include "hosts/command/kernels/KernelSize.h"

#include <gtest/gtest.h>

namespace {

using velorn::asStored;
using velorn::KernelSize;

TEST(KernelSize, SidesChangePlacesForPicturesStoredAfterAQuarterTurn) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const KernelSize stored = asStored(KernelSize{9, 5}, orientation);
        EXPECT_EQ(stored.width, orientation < 5 ? 9 : 5) << orientation;
        EXPECT_EQ(stored.height, orientation < 5 ? 5 : 9) << orientation;
    }
}

TEST(KernelSize, TextNamesBothSides) {
    EXPECT_EQ((KernelSize{9, 5}.text()), "9 by 5");
    EXPECT_EQ((KernelSize{9, 5}.largerSide()), 9);
    EXPECT_EQ((KernelSize{5, 9}.largerSide()), 9);
}

} // namespace
