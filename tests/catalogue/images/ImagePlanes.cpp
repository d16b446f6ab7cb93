#include "velimproclib/catalogue/images/ImagePlanes.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;

constexpr int kWidth = 37;
constexpr int kHeight = 5;

template <class Image>
void fillWithNoise(Image& image, unsigned seed) {
    std::mt19937 random(seed);
    for (int y = 0; y < image.m_height; ++y) {
        for (int x = 0; x < image.m_width * Image::kChannels; ++x) {
            image.row(y)[x] = static_cast<typename Image::Element>(random());
        }
    }
}

/// Fills a channel of a shifted region and expects everything else to stay.
template <class Plane, class Colour, class Operation>
void expectFillsChannel(Operation planeToChannel) {
    for (int c = 0; c < 3; ++c) {
        Plane src(kWidth, kHeight);
        Colour dst(kWidth, kHeight);
        Colour before(kWidth, kHeight);
        fillWithNoise(src, 1);
        fillWithNoise(dst, 2);
        fillWithNoise(before, 2);
        dst.shiftOrigin(3, 2);
        planeToChannel(c, src, dst);
        EXPECT_EQ(dst.m_status, 0);
        EXPECT_EQ(src.m_status, 1);
        dst.resetRoi();
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < 3 * kWidth; ++x) {
                const bool filled = y >= 2 && x >= 9 && x % 3 == c;
                EXPECT_EQ(dst.row(y)[x], filled ? src.row(y - 2)[x / 3 - 3] : before.row(y)[x]);
            }
        }
    }
}

template <class Plane, class Colour, class Operation>
void expectTakesChannel(Operation channelToPlane) {
    for (int c = 0; c < 3; ++c) {
        Colour src(kWidth, kHeight);
        Plane dst(kWidth, kHeight);
        Plane before(kWidth, kHeight);
        fillWithNoise(src, 3);
        fillWithNoise(dst, 4);
        fillWithNoise(before, 4);
        dst.shiftOrigin(1, 2);
        src.shiftOrigin(1, 1);
        channelToPlane(c, src, dst);
        EXPECT_EQ(dst.m_status, 0);
        dst.resetRoi();
        src.resetRoi();
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                EXPECT_EQ(dst.row(y)[x],
                          y >= 2 && x >= 1 ? src.row(y - 1)[3 * x + c] : before.row(y)[x]);
            }
        }
    }
}

TEST(ImagePlanes, PlaneFillsAChannelOverTheTargetsRegion) {
    expectFillsChannel<GIMG<unsigned char>, IMG3<unsigned char>>(imgPlaneToChannelU8);
    expectFillsChannel<IMG<short, 1>, IMG3<short>>(imgPlaneToChannelS16);
}

TEST(ImagePlanes, ChannelIsCopiedOverTheTargetsRegion) {
    expectTakesChannel<GIMG<unsigned char>, IMG3<unsigned char>>(imgChannelToPlaneU8);
    expectTakesChannel<IMG<short, 1>, IMG3<short>>(imgChannelToPlaneS16);
}

TEST(ImagePlanes, ColourBytesWidenToFloats) {
    IMG3<unsigned char> src(kWidth, kHeight);
    IMG<float, 3> dst(kWidth, kHeight);
    fillWithNoise(src, 5);
    imgConvertC3U8toF32(src, dst);
    EXPECT_EQ(dst.m_status, 0);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < 3 * kWidth; ++x) {
            EXPECT_EQ(dst.row(y)[x], static_cast<float>(src.row(y)[x]));
        }
    }
}

TEST(ImagePlanes, ColourBytesWidenOverTheTargetsRegionOnly) {
    IMG3<unsigned char> src(kWidth, kHeight);
    IMG<float, 3> dst(kWidth, kHeight);
    IMG<float, 3> before(kWidth, kHeight);
    fillWithNoise(src, 6);
    fillWithNoise(dst, 7);
    fillWithNoise(before, 7);
    src.shiftOrigin(1, 0);
    dst.shiftOrigin(4, 2);
    imgConvertC3U8toF32(src, dst);
    EXPECT_EQ(dst.m_status, 0);
    EXPECT_EQ(src.m_status, 1);
    src.resetRoi();
    dst.resetRoi();
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < 3 * kWidth; ++x) {
            const bool written = y >= 2 && x >= 12;
            EXPECT_EQ(dst.row(y)[x],
                      written ? static_cast<float>(src.row(y - 2)[x - 9]) : before.row(y)[x]);
        }
    }
}

/// An empty region of the target is refused; the next success overwrites that status.
template <class Source, class Target, class Helper>
void expectStatusRecorded(Helper helper) {
    Source src(4, 4);
    Target dst(4, 4);
    dst.shiftOrigin(4, 0);
    helper(src, dst);
    EXPECT_EQ(dst.m_status, -6);
    EXPECT_EQ(src.m_status, 1);
    dst.resetRoi();
    helper(src, dst);
    EXPECT_EQ(dst.m_status, 0);
    EXPECT_EQ(src.m_status, 1);
}

TEST(ImagePlanes, StatusOfThePrimitiveIsRecordedInTheTargetByEveryHelper) {
    using Grey = GIMG<unsigned char>;
    using Colour = IMG3<unsigned char>;
    expectStatusRecorded<Grey, Colour>(
        [](const auto& src, auto& dst) { imgPlaneToChannelU8(1, src, dst); });
    expectStatusRecorded<GIMG<short>, IMG3<short>>(
        [](const auto& src, auto& dst) { imgPlaneToChannelS16(1, src, dst); });
    expectStatusRecorded<Colour, Grey>(
        [](const auto& src, auto& dst) { imgChannelToPlaneU8(1, src, dst); });
    expectStatusRecorded<IMG3<short>, GIMG<short>>(
        [](const auto& src, auto& dst) { imgChannelToPlaneS16(1, src, dst); });
    expectStatusRecorded<Colour, IMG<float, 3>>(
        [](const auto& src, auto& dst) { imgConvertC3U8toF32(src, dst); });
}

} // namespace
