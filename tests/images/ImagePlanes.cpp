#include "velimproclib/images/ImagePlanes.h"

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

/// Fills a channel of a shifted region and demands that all else stays.
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

TEST(ImagePlanes, ChannelComesOutOverTheTargetsRegion) {
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

TEST(ImagePlanes, RefusalOfThePrimitiveIsRecordedInTheTarget) {
    GIMG<unsigned char> plane(4, 4);
    IMG3<unsigned char> colour(4, 4);
    colour.shiftOrigin(4, 0);
    imgPlaneToChannelU8(1, plane, colour);
    EXPECT_EQ(colour.m_status, -6);
    colour.resetRoi();
    imgPlaneToChannelU8(1, plane, colour);
    EXPECT_EQ(colour.m_status, 0);
}

} // namespace
