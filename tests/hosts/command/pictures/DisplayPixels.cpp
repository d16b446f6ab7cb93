#include "hosts/command/pictures/DisplayPixels.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/support/BlurredPicture.h"
#include "tests/support/IccProfiles.h"

#include <gtest/gtest.h>

namespace {

using velorn::DisplayPixels;
using velorn::displayPixels;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

/// `colours`, which begin with red, as display pixels.
Bytes blueFirst(const Bytes& colours) {
    Bytes bytes;
    for (std::size_t i = 0; i < colours.size(); i += 3) {
        bytes.insert(bytes.end(), {colours[i + 2], colours[i + 1], colours[i], 255});
    }
    return bytes;
}

TEST(DisplayPixels, WithoutProfilesColoursAreUnchanged) {
    const RgbPixels picture = vel::test::drawnPicture(13, 7);
    const DisplayPixels shown = displayPixels(picture, {}, 1.0f);
    EXPECT_EQ(shown.width, 13);
    EXPECT_EQ(shown.height, 7);
    EXPECT_EQ(shown.bytes, blueFirst(std::get<Bytes>(picture.samples)));
}

TEST(DisplayPixels, SixteenBitsAreTruncatedToEightAndWhiteStaysWhite) {
    const RgbPixels picture{2, 1, Words{0, 127, 128, 32640, 32767, 32768}};
    EXPECT_EQ(displayPixels(picture, {}, 1.0f).bytes, (Bytes{1, 0, 0, 255, 255, 255, 255, 255}));
}

TEST(DisplayPixels, ColoursAreConvertedFromOneProfileToTheOther) {
    const RgbPixels picture = vel::test::drawnPicture(20, 11);
    const auto& colours = std::get<Bytes>(picture.samples);
    const auto wide = vel::test::wideGamutProfile();
    const auto srgb = vel::test::srgbProfile();
    EXPECT_EQ(displayPixels(picture, {wide, {}}, 1.0f).bytes,
              blueFirst(vel::test::transformed(wide, {}, TYPE_RGB_8, colours)));
    EXPECT_EQ(displayPixels(picture, {{}, wide}, 1.0f).bytes,
              blueFirst(vel::test::transformed({}, wide, TYPE_RGB_8, colours)));
    EXPECT_EQ(displayPixels(picture, {srgb, wide}, 1.0f).bytes,
              blueFirst(vel::test::transformed(srgb, wide, TYPE_RGB_8, colours)));
}

TEST(DisplayPixels, ScaledPictureFillsItsBuffer) {
    const RgbPixels white{10, 7, Bytes(210, 255)};
    for (const float scale : {0.5f, 0.7f, 0.98f, 1.02f, 2.0f, 3.3f}) {
        const DisplayPixels shown = displayPixels(white, {}, scale);
        EXPECT_NEAR(shown.width, 10 * scale, 1.0f);
        EXPECT_NEAR(shown.height, 7 * scale, 1.0f);
        EXPECT_EQ(shown.bytes, Bytes(static_cast<std::size_t>(4 * shown.width * shown.height), 255))
            << scale;
    }
    EXPECT_EQ(displayPixels(white, {}, 1.005f).width, 10);
}

TEST(DisplayPixels, ScaleWithoutPixelsIsAFailure) {
    EXPECT_THROW(displayPixels(vel::test::drawnPicture(30, 4), {}, 0.2f), velorn::Failure);
}

TEST(DisplayPixels, BufferLargerThanTheRecordsCanDescribeIsAFailure) {
    const RgbPixels line{1 << 20, 1, Bytes(std::size_t{3} << 20)};
    EXPECT_THROW(displayPixels(line, {}, 1000.0f), velorn::Failure);
}

TEST(DisplayPixels, OnlyRgbProfilesAreAccepted) {
    for (const auto& profile : {vel::test::srgbProfile(), vel::test::wideGamutProfile()}) {
        EXPECT_TRUE(velorn::isSourceProfile(profile));
        EXPECT_TRUE(velorn::isDisplayProfile(profile));
    }
    for (const auto& profile :
         {vel::test::greyProfile(), vel::test::labProfile(), vel::test::garbageProfile()}) {
        EXPECT_FALSE(velorn::isSourceProfile(profile));
        EXPECT_FALSE(velorn::isDisplayProfile(profile));
    }
}

TEST(DisplayPixels, RefusedProfileLeavesTheColoursUnchanged) {
    const RgbPixels picture = vel::test::drawnPicture(9, 5);
    EXPECT_EQ(displayPixels(picture, {vel::test::garbageProfile(), {}}, 1.0f).bytes,
              displayPixels(picture, {}, 1.0f).bytes);
}

} // namespace
