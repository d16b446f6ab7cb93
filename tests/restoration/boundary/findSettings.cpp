#include "restoration/boundary/findSettings.h"

#include "restoration/boundary/VelornKernel.h"
#include "tests/restoration/boundary/failureOf.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

VelornPicture picture() {
    VelornPicture picture{};
    picture.width = 100;
    picture.height = 80;
    return picture;
}

std::string failureOf(const VelornFindSettings& settings) {
    return test::failureOf([&] { checkedSettings(&settings, picture()); });
}

std::string failureWith(std::int32_t VelornFindSettings::*member, std::int32_t value) {
    VelornFindSettings settings = findDefaults();
    settings.*member = value;
    return failureOf(settings);
}

TEST(FindSettings, NullGivesTheDefaults) {
    EXPECT_EQ(checkedSettings(nullptr, picture()).maxWidth, 0);
}

TEST(FindSettings, IntegersHaveTheirLimits) {
    using S = VelornFindSettings;
    for (const auto member : {&S::maxWidth, &S::maxHeight}) {
        for (const int side : {0, 3, 511}) {
            EXPECT_EQ(failureWith(member, side), "");
        }
    }
    EXPECT_EQ(failureWith(&S::maxWidth, 2), "settings->maxWidth is 2, but must be 3..511");
    EXPECT_EQ(failureWith(&S::maxHeight, 512), "settings->maxHeight is 512, but must be 3..511");
    EXPECT_EQ(failureWith(&S::partSide, 0), "");
    EXPECT_EQ(failureWith(&S::partSide, 64), "");
    EXPECT_EQ(failureWith(&S::partSide, 63), "settings->partSide is 63, but must be at least 64");
    EXPECT_EQ(failureWith(&S::threads, 2), "");
    EXPECT_EQ(failureWith(&S::threads, -1), "settings->threads is -1, but must be at least 0");
}

TEST(FindSettings, UnknownSizesFail) {
    VelornFindSettings settings = findDefaults();
    settings.size = 0;
    EXPECT_NE(failureOf(settings), "");
}

TEST(FindSettings, RegionsLieInsideOfThePicture) {
    VelornFindSettings settings = findDefaults();
    for (const VelornRegion& inside :
         {VelornRegion{0, 0, 0, 0}, {0, 0, 100, 80}, {99, 79, 1, 1}, {-9, 7, 0, -3}}) {
        settings.region = inside;
        EXPECT_EQ(failureOf(settings), "");
    }
    settings.region = {100, 0, 1, 1};
    EXPECT_EQ(failureOf(settings), "settings->region.x is 100, but must be 0..99");
    settings.region = {40, 0, 61, 10};
    EXPECT_EQ(failureOf(settings), "settings->region.width is 61, but must be 1..60");
    settings.region = {0, 70, 10, 11};
    EXPECT_EQ(failureOf(settings), "settings->region.height is 11, but must be 1..10");
}

TEST(FindSettings, SearchHasTheRegionAndTheStart) {
    VelornKernel start;
    VelornFindSettings settings = findDefaults();
    EXPECT_TRUE(searchOf(settings).region.isEmpty());
    EXPECT_EQ(searchOf(settings).start, nullptr);
    settings.region = {1, 2, 30, 40};
    settings.start = &start;
    EXPECT_EQ(searchOf(settings).region, (Rect{1, 2, 30, 40}));
    EXPECT_EQ(searchOf(settings).start, &start.kernel);
}

} // namespace
} // namespace restoration
