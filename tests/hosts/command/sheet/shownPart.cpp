#include "hosts/command/sheet/shownPart.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using velorn::ImageFile;
using velorn::RgbPixels;
using velorn::shownPart;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const RgbPixels& pixels) {
    return std::get<Bytes>(pixels.samples);
}

class ShownPart : public testing::Test {
protected:
    ImageFile colours(int orientation) {
        OIIO::ImageSpec spec(4, 3, 4, OIIO::TypeDesc::UINT8);
        spec.alpha_channel = 3;
        spec.attribute("Orientation", orientation);
        Bytes samples;
        for (int i = 0; i < 12; ++i) {
            for (const int sample : {10 * i, 10 * i + 1, 10 * i + 2, 255}) {
                samples.push_back(static_cast<std::uint8_t>(sample));
            }
        }
        const auto path = m_folder / "in.tif";
        vel::test::writePicture(path, spec, samples);
        return ImageFile::read(path);
    }

    vel::test::TemporaryFolder m_folder;
    velorn::Interrupt m_interrupt;
};

TEST_F(ShownPart, HasTheColoursOfTheArea) {
    const RgbPixels part = shownPart(colours(1), {1, 1, 2, 1}, 1, m_interrupt);
    EXPECT_EQ(part.width, 2);
    EXPECT_EQ(part.height, 1);
    EXPECT_EQ(bytesOf(part), (Bytes{50, 51, 52, 60, 61, 62}));
}

TEST_F(ShownPart, IsUpright) {
    // A quarter turn clockwise.
    const RgbPixels part = shownPart(colours(6), {1, 1, 2, 1}, 1, m_interrupt);
    EXPECT_EQ(part.width, 1);
    EXPECT_EQ(part.height, 2);
    const RgbPixels column = shownPart(colours(6), {0, 0, 1, 2}, 1, m_interrupt);
    EXPECT_EQ(bytesOf(column), (Bytes{40, 41, 42, 0, 1, 2}));
}

TEST_F(ShownPart, AveragesSquares) {
    // The pixels 0, 1, 4 and 5.
    EXPECT_EQ(bytesOf(shownPart(colours(1), {0, 0, 3, 3}, 2, m_interrupt)), (Bytes{25, 26, 27}));
}

TEST_F(ShownPart, GreyOfSixteenBitsIsRoundedToThreeEqualChannels) {
    ImageFile grey(2, 1, 1, 16);
    std::get<std::vector<std::uint16_t>>(grey.samples()) = {65535, 386};
    EXPECT_EQ(bytesOf(shownPart(grey, {0, 0, 2, 1}, 1, m_interrupt)),
              (Bytes{255, 255, 255, 2, 2, 2}));
}

TEST(ColoursOf, OmitsAlpha) {
    EXPECT_EQ(bytesOf(velorn::coloursOf({7, 255, 9, 255}, 2, 1, 2)), (Bytes{7, 7, 7, 9, 9, 9}));
    EXPECT_EQ(bytesOf(velorn::coloursOf({1, 2, 3, 255}, 1, 1, 4)), (Bytes{1, 2, 3}));
}

} // namespace
