#include "hosts/command/pictures/thumbnail.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <gtest/gtest.h>

namespace {

using vel::test::readPicture;
using vel::test::TemporaryFolder;
using vel::test::writeBytes;
using velorn::ImageFile;

/// A picture whose left half is black and whose right half is `white`.
template <class T>
ImageFile halves(int width, int height, int channels, T white) {
    ImageFile picture(width, height, channels, 8 * static_cast<int>(sizeof(T)));
    auto& samples = std::get<std::vector<T>>(picture.samples());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto column =
            i / static_cast<std::size_t>(channels) % static_cast<std::size_t>(width);
        samples[i] = 2 * column < static_cast<std::size_t>(width) ? T{0} : white;
    }
    return picture;
}

void expectHalves(const ImageFile& picture, int width, int height) {
    const TemporaryFolder folder;
    writeBytes(folder / "a.jpg", velorn::jpegThumbnail(picture));
    OIIO::ImageSpec spec;
    const auto samples = readPicture<std::uint8_t>(folder / "a.jpg", spec);
    ASSERT_EQ(spec.width, width);
    ASSERT_EQ(spec.height, height);
    ASSERT_EQ(spec.nchannels, 3);
    EXPECT_LT(samples.front(), 10);
    EXPECT_GT(samples[3 * static_cast<std::size_t>(width) - 1], 245);
}

TEST(Thumbnail, ShowsThePictureReduced) {
    expectHalves(halves<std::uint8_t>(1000, 500, 3, 255), 160, 80);
    expectHalves(halves<std::uint16_t>(1000, 500, 3, 65535), 160, 80);
    expectHalves(halves<std::uint8_t>(330, 660, 1, 255), 80, 160);
    expectHalves(halves<std::uint8_t>(40, 20, 3, 255), 40, 20);
    expectHalves(halves<std::uint8_t>(4000, 3, 3, 255), 160, 1);
}

TEST(Thumbnail, HasNoMetadata) {
    const auto file = velorn::jpegThumbnail(ImageFile(20, 10, 3, 8));
    const std::string text(file.begin(), file.end());
    EXPECT_EQ(text.find("Exif"), std::string::npos);
}

} // namespace
