#include "velimproclib/catalogue/bridge/iccTransformHostRows.h"

#include "tests/support/GuardedPlane.h"
#include "tests/support/IccProfiles.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace vel;
using namespace vel::test;

constexpr int kWidth = 67;
constexpr int kHeight = 21;

GuardedPlane<std::uint8_t> randomBytes() {
    std::mt19937 random(2);
    GuardedPlane<std::uint8_t> rows(3 * kWidth, kHeight, 4, 3);
    rows.fill([&] { return static_cast<std::uint8_t>(random()); });
    return rows;
}

/// `rows` after `load` of every element, a conversion of `format` from one profile to the other,
/// and `store` of every element.
template <class Element, class Load, class Store>
GuardedPlane<Element> expectedRows(const ProfileBytes& in, const ProfileBytes& out,
                                   cmsUInt32Number format, GuardedPlane<Element> rows, Load&& load,
                                   Store&& store) {
    std::vector<Element> colours;
    for (int y = 0; y < rows.height(); ++y) {
        for (int x = 0; x < rows.width(); ++x) {
            colours.push_back(static_cast<Element>(load(rows.at(x, y))));
        }
    }
    colours = transformed(in, out, format, colours);
    auto colour = colours.begin();
    rows.fill([&] { return store(*colour++); });
    return rows;
}

TEST(IccTransformHostRows, EightBitsAreTransformed) {
    const ProfileBytes wide = wideGamutProfile();
    const auto before = randomBytes();
    const auto asItIs = [](int element) { return element; };
    const auto expected = expectedRows(wide, {}, TYPE_RGB_8, before, asItIs, asItIs);
    forThreadCounts([&] {
        auto rows = before;
        ASSERT_EQ(iccTransformHostRows(profilesRecord(wide, {}), rows.data(), true, rows.step(),
                                       kWidth, kHeight),
                  1);
        EXPECT_TRUE(rows.intact());
        EXPECT_TRUE(rows.sameBits(expected));
    });
}

TEST(IccTransformHostRows, FifteenBitsAreLimitedDoubledTransformedAndHalved) {
    std::mt19937 random(3);
    const ProfileBytes wide = wideGamutProfile();
    GuardedPlane<std::uint16_t> before(3 * kWidth, kHeight, 5, 1);
    before.fill([&] { return random() % 8 == 0 ? random() : random() % 32769; });
    const auto expected = expectedRows(
        {}, wide, TYPE_RGB_16, before, [](int element) { return 2 * std::min(element, 32767); },
        [](int element) { return element >> 1; });
    forThreadCounts([&] {
        auto rows = before;
        ASSERT_EQ(iccTransformHostRows(profilesRecord({}, wide), rows.data(), false, rows.step(),
                                       kWidth, kHeight),
                  1);
        EXPECT_TRUE(rows.intact());
        EXPECT_TRUE(rows.sameBits(expected));
    });
}

TEST(IccTransformHostRows, WhiteBecomesTheLargestDoubledValue) {
    const ProfileBytes srgb = srgbProfile();
    std::uint16_t pixel[3] = {32768, 32767, 65535};
    ASSERT_EQ(iccTransformHostRows(profilesRecord(srgb, srgb), pixel, false, 6, 1, 1), 1);
    EXPECT_EQ(pixel[0], pixel[1]);
    EXPECT_NEAR(pixel[0], 32767, 2);
    EXPECT_EQ(pixel[2], pixel[1]);
}

TEST(IccTransformHostRows, WithoutATransformReturnZeroForEightBitsAndOneForSixteen) {
    const ProfileBytes grey = greyProfile();
    const ProfileBytes garbage = garbageProfile();
    const auto before = randomBytes();
    auto rows = before;
    EXPECT_EQ(iccTransformHostRows(profilesRecord(grey, {}), rows.data(), true, rows.step(), 9, 9),
              0);
    EXPECT_EQ(iccTransformHostRows(profilesRecord(grey, {}), rows.data(), false, rows.step(), 9, 9),
              1);
    EXPECT_EQ(
        iccTransformHostRows(profilesRecord(garbage, {}), rows.data(), true, rows.step(), 9, 9), 0);
    EXPECT_EQ(
        iccTransformHostRows(profilesRecord({}, garbage), rows.data(), false, rows.step(), 9, 9),
        0);
    EXPECT_TRUE(rows.sameBits(before));
}

TEST(IccTransformHostRows, WithoutProfilesNothingIsConverted) {
    const auto before = randomBytes();
    auto rows = before;
    EXPECT_EQ(iccTransformHostRows({}, rows.data(), true, rows.step(), 9, 9), 1);
    EXPECT_EQ(iccTransformHostRows({}, rows.data(), false, rows.step(), 9, 9), 1);
    EXPECT_TRUE(rows.sameBits(before));
}

} // namespace
