// The display and scale exports, tested through the shared library.
#include "tests/frame/LoadedLibrary.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/IccProfiles.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace vel::test;

constexpr int32_t kHuge = std::numeric_limits<int32_t>::max();

class Display : public ::testing::Test {
protected:
    Display() {
        // A text of an earlier failure, which these exports must not change.
        auto* const estimate = VELORN_FIND(library, ornBlurEstimate);
        EXPECT_EQ(estimate(nullptr, nullptr, nullptr, 0.0f), VELORN_TEXT_FAILURE);
        textBefore = errorMessage();
        EXPECT_NE(textBefore, "");
        std::mt19937 random(1);
        std::generate(pixels.begin(), pixels.end(),
                      [&] { return static_cast<std::uint8_t>(random()); });
    }
    ~Display() override { EXPECT_EQ(errorMessage(), textBefore); }

    int32_t show(float scale) {
        return showImage(&image, target.data(), target.step(), 12, 8, scale);
    }
    int32_t showManaged(PSProfilesRecord* profiles, float scale) {
        return showImageManaged(profiles, &image, target.data(), target.step(), 12, 8, scale);
    }

    LoadedLibrary library;
    decltype(PSImage2QImage)* showImage = VELORN_FIND(library, PSImage2QImage);
    decltype(PSImageICC2QImage)* showImageManaged = VELORN_FIND(library, PSImageICC2QImage);
    decltype(psC1U8toU15)* toU15 = VELORN_FIND(library, psC1U8toU15);
    decltype(psC1U15toU8)* toU8 = VELORN_FIND(library, psC1U15toU8);
    decltype(getErrMsg)* errorMessage = VELORN_FIND(library, getErrMsg);

    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(10 * 7 * 3);
    PlaneRecord image{psC3U8, pixels.data(), 30, 10, 7};
    GuardedPlane<std::uint8_t> target{48, 8, 3, 1};
    std::string textBefore;
};

TEST_F(Display, ImageIsCopiedAsBlueGreenRedOpaque) {
    target.fill([] { return 5; });
    ASSERT_EQ(show(1.0f), VELORN_OK);
    EXPECT_TRUE(target.intact());
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 12; ++x) {
            for (int c = 0; c < 3; ++c) {
                const auto i = static_cast<std::size_t>(30 * y + 3 * x + 2 - c);
                EXPECT_EQ(target.at(4 * x + c, y), x < 10 && y < 7 ? pixels[i] : 5);
            }
            EXPECT_EQ(target.at(4 * x + 3, y), x < 10 && y < 7 ? 255 : 5);
        }
    }
}

TEST_F(Display, HalvedPixelIsTheMeanOfFourPixelsAndTheRestIsBlack) {
    ASSERT_EQ(show(0.5f), VELORN_OK);
    EXPECT_TRUE(target.intact());
    for (int c = 0; c < 3; ++c) {
        const auto colour = static_cast<std::size_t>(2 - c);
        const int sum =
            pixels[colour] + pixels[3 + colour] + pixels[30 + colour] + pixels[33 + colour];
        EXPECT_NEAR(target.at(c, 0), sum / 4.0, 1.0);
        EXPECT_EQ(target.at(20 + c, 0), 0);
        EXPECT_EQ(target.at(c, 3), 0);
    }
    EXPECT_EQ(target.at(47, 7), 255);
}

TEST_F(Display, FailuresHaveStatusesOfTheirOwn) {
    EXPECT_EQ(showImage(&image, target.data(), kHuge, kHuge, 1, 2.0f), VELORN_DISPLAY_FAILURE);
    EXPECT_EQ(showImage(nullptr, target.data(), 48, 12, 8, 1.0f), VELORN_BAD_ARGUMENT);
    image.format = psC1U8;
    EXPECT_EQ(show(1.0f), VELORN_BAD_ARGUMENT);
    EXPECT_EQ(showManaged(nullptr, 1.0f), VELORN_BAD_ARGUMENT);
}

TEST_F(Display, ManagedImageIsConvertedFromItsProfileToSrgb) {
    const ProfileBytes wide = wideGamutProfile();
    PSProfilesRecord profiles{wide.data(), static_cast<int32_t>(wide.size()), nullptr, 0};
    ASSERT_EQ(showManaged(&profiles, 1.0f), VELORN_OK);
    EXPECT_TRUE(target.intact());
    const auto expected = transformed(wide, {}, TYPE_RGB_8, pixels);
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 10; ++x) {
            for (int c = 0; c < 3; ++c) {
                EXPECT_EQ(target.at(4 * x + c, y),
                          expected[static_cast<std::size_t>(30 * y + 3 * x + 2 - c)]);
            }
            EXPECT_EQ(target.at(4 * x + 3, y), 255);
        }
    }
}

TEST_F(Display, FaultyProfileReturnsZeroAndShowsTheImageWithoutColourManagement) {
    ASSERT_EQ(show(2.0f), VELORN_OK);
    const auto plain = target;
    const ProfileBytes garbage = garbageProfile();
    PSProfilesRecord profiles{garbage.data(), static_cast<int32_t>(garbage.size()), nullptr, 0};
    target.fill([] { return 0; });
    EXPECT_EQ(showManaged(&profiles, 2.0f), 0);
    EXPECT_TRUE(target.sameBits(plain));
}

TEST_F(Display, SixteenBitPixelsMayStartAtOddAddresses) {
    constexpr int kWidth = 67;
    constexpr int kHeight = 5;
    std::mt19937 random(2);
    GuardedPlane<std::uint16_t> wide(3 * kWidth, kHeight, 3, 1);
    wide.fill([&] { return random() % 32769; });
    PlaneRecord wideImage{psC3U16, wide.data(), wide.step(), kWidth, kHeight};
    GuardedPlane<std::uint8_t> shown(4 * kWidth, kHeight, 3, 1);
    ASSERT_EQ(showImage(&wideImage, shown.data(), shown.step(), kWidth, kHeight, 1.0f), VELORN_OK);
    EXPECT_TRUE(shown.intact());
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < 3 * kWidth; ++x) {
            const int fromBlue = 2 - x % 3;
            ASSERT_EQ(shown.at(x / 3 * 4 + fromBlue, y), std::min(wide.at(x, y) >> 7, 255));
        }
    }
}

TEST_F(Display, SixteenBitScalesMayStartAtOddAddresses) {
    constexpr int kWidth = 67;
    constexpr int kHeight = 5;
    std::mt19937 random(3);
    GuardedPlane<std::uint8_t> levels(kWidth, kHeight, 3, 1);
    levels.fill([&] { return random(); });
    GuardedPlane<std::uint16_t> raised(kWidth, kHeight, 3, 1);
    GuardedPlane<std::uint8_t> back(kWidth, kHeight, 5, 3);
    ASSERT_EQ(toU15(levels.data(), levels.step(), kWidth, kHeight, raised.data(), raised.step()),
              1);
    EXPECT_TRUE(raised.intact());
    ASSERT_EQ(toU8(raised.data(), raised.step(), kWidth, kHeight, back.data(), back.step()), 1);
    EXPECT_TRUE(back.intact());
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            ASSERT_EQ(raised.at(x, y), 128 * (levels.at(x, y) + 1));
        }
    }
    EXPECT_TRUE(back.sameBits(levels));
}

TEST_F(Display, ScalesAreExactInversesOnEveryLevel) {
    std::vector<std::uint8_t> levels(256);
    std::iota(levels.begin(), levels.end(), std::uint8_t{0});
    std::vector<std::uint16_t> raised(256);
    std::vector<std::uint8_t> back(256);
    ASSERT_EQ(toU15(levels.data(), 16, 16, 16, raised.data(), 32), 1);
    ASSERT_EQ(toU8(raised.data(), 32, 16, 16, back.data(), 16), 1);
    EXPECT_EQ(raised[0], 128);
    EXPECT_EQ(raised[1], 256);
    EXPECT_EQ(raised[254], 32640);
    EXPECT_EQ(raised[255], 32768);
    EXPECT_EQ(back, levels);
}

TEST_F(Display, ImpossibleScaleConversionsReturnOneAndLeaveTheTargetUnchanged) {
    const std::vector<std::uint8_t> levels(16, 3);
    std::vector<std::uint16_t> values(16, 1000);
    std::vector<std::uint8_t> back(16, 100);
    EXPECT_EQ(toU15(nullptr, 4, 4, 4, values.data(), 8), 1);
    EXPECT_EQ(toU15(levels.data(), 4, 4, 4, nullptr, 8), 1);
    EXPECT_EQ(toU15(levels.data(), 4, 0, 4, values.data(), 8), 1);
    EXPECT_EQ(toU15(levels.data(), 4, 4, -1, values.data(), 8), 1);
    EXPECT_EQ(toU8(nullptr, 8, 4, 4, back.data(), 4), 1);
    EXPECT_EQ(toU8(values.data(), 8, 4, 4, nullptr, 4), 1);
    EXPECT_EQ(toU8(values.data(), 8, 4, 0, back.data(), 4), 1);
    EXPECT_EQ(toU8(values.data(), 8, -4, 4, back.data(), 4), 1);
    EXPECT_EQ(toU8(values.data(), 8, 4, -4, back.data(), 4), 1);
    EXPECT_EQ(toU8(values.data(), kHuge, kHuge, kHuge - 1, back.data(), kHuge), 1);
    EXPECT_EQ(values, std::vector<std::uint16_t>(16, 1000));
    EXPECT_EQ(back, std::vector<std::uint8_t>(16, 100));
}

} // namespace
