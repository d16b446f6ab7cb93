#include "hosts/command/pictures/upright.h"

#include <gtest/gtest.h>

namespace {

using velorn::RgbPixels;
using velorn::upright;

/// A picture whose pixels have the given numbers in all three channels.
template <class T>
RgbPixels numbered(int width, int height, const std::vector<T>& numbers) {
    std::vector<T> samples;
    for (const T number : numbers) {
        samples.insert(samples.end(), 3, number);
    }
    return {width, height, samples};
}

TEST(Upright, EveryOrientationIsDisplayedUpright) {
    // As stored:  1 2 3
    //             4 5 6
    using Bytes = std::vector<std::uint8_t>;
    const RgbPixels stored = numbered<std::uint8_t>(3, 2, {1, 2, 3, 4, 5, 6});
    const std::vector<Bytes> expected{{1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1},
                                      {4, 5, 6, 1, 2, 3}, {1, 4, 2, 5, 3, 6}, {4, 1, 5, 2, 6, 3},
                                      {6, 3, 5, 2, 4, 1}, {3, 6, 2, 5, 1, 4}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const RgbPixels turned = upright(stored, orientation);
        const int width = orientation < 5 ? 3 : 2;
        const RgbPixels wanted = numbered<std::uint8_t>(
            width, 6 / width, expected[static_cast<std::size_t>(orientation - 1)]);
        EXPECT_EQ(turned.width, wanted.width) << orientation;
        EXPECT_EQ(turned.height, wanted.height) << orientation;
        EXPECT_EQ(turned.samples, wanted.samples) << orientation;
    }
}

TEST(Upright, SixteenBitSamplesKeepTheirValues) {
    const RgbPixels stored = numbered<std::uint16_t>(1, 3, {1, 32768, 65535});
    EXPECT_EQ(upright(stored, 3).samples, numbered<std::uint16_t>(1, 3, {65535, 32768, 1}).samples);
}

} // namespace
