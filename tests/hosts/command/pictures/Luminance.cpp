#include "hosts/command/pictures/Luminance.h"

#include <gtest/gtest.h>

namespace {

using velorn::luminanceOf;
using velorn::RgbPixels;

TEST(Luminance, ColoursHaveTheirWeights) {
    const RgbPixels pixels{2, 1, std::vector<std::uint8_t>{255, 0, 0, 0, 255, 0}};
    const auto luminance = luminanceOf(pixels);
    EXPECT_NEAR(luminance.at(0, 0), 0.299f * 255.0f, 1e-3f);
    EXPECT_NEAR(luminance.at(1, 0), 0.587f * 255.0f, 1e-3f);
}

TEST(Luminance, WhiteIs255AtBothDepths) {
    const RgbPixels narrow{1, 1, std::vector<std::uint8_t>(3, 255)};
    const RgbPixels wide{1, 1, std::vector<std::uint16_t>(3, 32768)};
    EXPECT_NEAR(luminanceOf(narrow).at(0, 0), 255.0f, 1e-3f);
    EXPECT_NEAR(luminanceOf(wide).at(0, 0), 255.0f, 1e-3f);
}

} // namespace
