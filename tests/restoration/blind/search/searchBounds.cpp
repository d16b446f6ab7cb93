#include "restoration/blind/search/searchBounds.h"

#include "restoration/failures/Failure.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

KernelBounds boundsWith(FindSettings settings, int width = 300, int height = 200) {
    return searchBounds(Plane(width, height), settings);
}

TEST(SearchBounds, AreAFifthOfTheShorterSideUnlessTheCallerLimitsThem) {
    const KernelBounds bounds = boundsWith({});
    EXPECT_EQ(bounds.width, 41);
    EXPECT_EQ(bounds.height, 41);
    const KernelBounds limited = boundsWith({10, 500});
    EXPECT_EQ(limited.width, 9);
    EXPECT_EQ(limited.height, 67); // a third of the picture
    EXPECT_EQ(limited.side(), 67);
    EXPECT_EQ(limited.smallerSide(), 9);
}

TEST(SearchBounds, AKernelToRefineHasRoomToGrow) {
    const Kernel start{9, 31, std::vector<float>(9 * 31, 1.0f)};
    FindSettings settings;
    settings.start = &start;
    EXPECT_EQ(boundsWith(settings).width, 21);
    EXPECT_EQ(boundsWith(settings).height, 65);
    EXPECT_EQ(boundsWith(settings, 2000, 2000).height, 65);
}

TEST(SearchBounds, RefuseSmallPicturesAndLargeKernelsToRefine) {
    EXPECT_THROW(boundsWith({}, 31, 400), Failure);
    EXPECT_NO_THROW(boundsWith({}, 32, 400));
    const Kernel start{73, 1, std::vector<float>(73, 1.0f)};
    FindSettings settings;
    settings.start = &start;
    EXPECT_THROW(boundsWith(settings, 2000, 2000), Failure);
}

TEST(FittingSide, IsOddAndLeavesRoomAroundTheKernel) {
    EXPECT_EQ(fittingSide(1), 7);
    EXPECT_EQ(fittingSide(10), 17);
    EXPECT_EQ(fittingSide(31), 47);
}

} // namespace
} // namespace restoration
