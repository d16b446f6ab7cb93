#include "hosts/command/sheet/detailArea.h"

#include <gtest/gtest.h>

namespace {

using velorn::detailArea;
using velorn::ImageFile;
using velorn::PictureArea;

/// A grey picture of `bits` with stripes in a rectangle.
template <class T>
ImageFile striped(int width, int height, const PictureArea& stripes) {
    ImageFile picture(width, height, 1, 8 * static_cast<int>(sizeof(T)));
    auto& samples = std::get<std::vector<T>>(picture.samples());
    for (int y = stripes.y; y < stripes.y + stripes.height; ++y) {
        for (int x = stripes.x; x < stripes.x + stripes.width; ++x) {
            samples[static_cast<std::size_t>(y * width + x)] =
                static_cast<T>(x / 4 % 2 * (sizeof(T) == 1 ? 100 : 25700));
        }
    }
    return picture;
}

class DetailArea : public testing::Test {
protected:
    velorn::Interrupt m_interrupt;
};

TEST_F(DetailArea, LiesWhereThePictureChangesMost) {
    const PictureArea stripes{192, 112, 64, 48};
    const PictureArea all{0, 0, 400, 300};
    EXPECT_EQ(detailArea(striped<std::uint8_t>(400, 300, stripes), all, 64, 48, m_interrupt),
              stripes);
    EXPECT_EQ(detailArea(striped<std::uint16_t>(400, 300, stripes), all, 64, 48, m_interrupt),
              stripes);
}

TEST_F(DetailArea, StaysInsideOfItsBounds) {
    const ImageFile picture = striped<std::uint8_t>(400, 300, {300, 200, 100, 100});
    const PictureArea within{10, 20, 150, 130};
    const PictureArea area = detailArea(picture, within, 100, 90, m_interrupt);
    EXPECT_EQ(area.width, 100);
    EXPECT_EQ(area.height, 90);
    EXPECT_GE(area.x, 10);
    EXPECT_GE(area.y, 20);
    EXPECT_LE(area.x + area.width, 160);
    EXPECT_LE(area.y + area.height, 150);
}

TEST_F(DetailArea, IsAllOfASmallPicture) {
    const PictureArea all{0, 0, 50, 9};
    EXPECT_EQ(detailArea(striped<std::uint8_t>(50, 9, {0, 0, 50, 9}), all, 64, 48, m_interrupt),
              all);
}

TEST_F(DetailArea, NoiseDoesNotCount) {
    // A smooth rectangle with two edges, amid weak changes that sum up to more.
    ImageFile picture(400, 300, 1, 8);
    auto& samples = std::get<std::vector<std::uint8_t>>(picture.samples());
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 400; ++x) {
            const bool isSmooth = x >= 96 && x < 224 && y >= 96 && y < 208;
            samples[static_cast<std::size_t>(y * 400 + x)] = static_cast<std::uint8_t>(
                isSmooth ? (x < 160 ? 100 : 150) : 100 + 3 * ((x + y) % 2));
        }
    }
    const PictureArea area = detailArea(picture, {0, 0, 400, 300}, 64, 48, m_interrupt);
    EXPECT_LT(area.x, 224);
    EXPECT_GE(area.x + area.width, 160);
    EXPECT_LT(area.y, 208);
    EXPECT_GT(area.y + area.height, 96);
}

} // namespace
