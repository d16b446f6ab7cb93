#include "hosts/command/pictures/PixelScale.h"

#include <gtest/gtest.h>

namespace {

using velorn::fromFifteenBits;
using velorn::toFifteenBits;

TEST(PixelScale, BlackAndWhiteAreKept) {
    EXPECT_EQ(toFifteenBits(0), 0);
    EXPECT_EQ(toFifteenBits(65535), 32768);
    EXPECT_EQ(fromFifteenBits(0), 0);
    EXPECT_EQ(fromFifteenBits(32768), 65535);
}

TEST(PixelScale, EveryLevelOfTheLibraryIsRestored) {
    for (int level = 0; level <= 32768; ++level) {
        const auto value = static_cast<std::uint16_t>(level);
        ASSERT_EQ(toFifteenBits(fromFifteenBits(value)), value);
    }
}

TEST(PixelScale, FileLevelsAreRoundedToNearest) {
    for (int level = 0; level <= 65535; ++level) {
        const double exact = level * 32768.0 / 65535.0;
        ASSERT_NEAR(toFifteenBits(static_cast<std::uint16_t>(level)), exact, 0.5);
    }
}

TEST(PixelScale, ValuesAboveWhiteBecomeWhite) {
    EXPECT_EQ(fromFifteenBits(32769), 65535);
    EXPECT_EQ(fromFifteenBits(65535), 65535);
}

} // namespace
