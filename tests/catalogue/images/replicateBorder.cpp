#include "velimproclib/catalogue/images/replicateBorder.h"

#include "tests/support/GuardedPlane.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace vel;
using vel::test::GuardedPlane;

void replicate(IMG<float, 1>& img, int left, int top, int right, int bottom) {
    replicateBorderF32(img, left, top, right, bottom);
}

void replicate(IMG<float, 3>& img, int left, int top, int right, int bottom) {
    replicateBorderF32C3(img, left, top, right, bottom);
}

/// A random image inside a plane with odd steps; the `frame` pixels around it must not change.
template <int N>
struct Picture {
    static constexpr int kFrame = 2;
    int width;
    int height;
    GuardedPlane<float> plane;

    Picture(int w, int h, int extraStep, int misalign, std::mt19937& random)
        : width(w), height(h), plane((w + 2 * kFrame) * N, h + 2 * kFrame, extraStep, misalign) {
        plane.fill([&] { return static_cast<float>(random() % 1000); });
    }
    float at(int x, int y, int c) const { return plane.at((x + kFrame) * N + c, y + kFrame); }
};

template <int N>
void expectRepeatsTheNearestKeptPixel() {
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        const int left = static_cast<int>(random() % 5);
        const int top = static_cast<int>(random() % 5);
        const int right = static_cast<int>(random() % 5);
        const int bottom = static_cast<int>(random() % 5);
        const int width = left + right + 1 + static_cast<int>(random() % 7);
        const int height = top + bottom + 1 + static_cast<int>(random() % 7);
        Picture<N> picture(width, height, static_cast<int>(random() % 7),
                           static_cast<int>(random() % 7), random);
        const Picture<N> before = picture;
        constexpr int kFrame = Picture<N>::kFrame;
        IMG<float, N> img(width + 2 * kFrame, height + 2 * kFrame, picture.plane.data(),
                          picture.plane.step());
        img.shiftOrigin(kFrame, kFrame);
        img.m_roiW -= kFrame;
        img.m_roiH -= kFrame;
        replicate(img, left, top, right, bottom);
        EXPECT_TRUE(picture.plane.intact());
        for (int y = -kFrame; y < height + kFrame; ++y) {
            for (int x = -kFrame; x < width + kFrame; ++x) {
                const bool inside = x >= 0 && x < width && y >= 0 && y < height;
                const int fromX = inside ? std::clamp(x, left, width - right - 1) : x;
                const int fromY = inside ? std::clamp(y, top, height - bottom - 1) : y;
                for (int c = 0; c < N; ++c) {
                    ASSERT_EQ(picture.at(x, y, c), before.at(fromX, fromY, c)) << x << ' ' << y;
                }
            }
        }
    }
}

TEST(ReplicateBorder, EveryMarginPixelRepeatsTheNearestKeptOneWithinTheRegion) {
    expectRepeatsTheNearestKeptPixel<1>();
    expectRepeatsTheNearestKeptPixel<3>();
}

TEST(ReplicateBorder, OverlappingMarginsRepeatRowsBeforeColumns) {
    GIMG<float> img(1, 3);
    for (int y = 0; y < 3; ++y) {
        img.row(y)[0] = static_cast<float>(y);
    }
    replicateBorderF32(img, 0, 2, 0, 2);
    EXPECT_EQ(img.row(0)[0], 2.0f);
    EXPECT_EQ(img.row(1)[0], 2.0f);
    EXPECT_EQ(img.row(2)[0], 2.0f);
}

TEST(ReplicateBorder, NegativeMarginsAndMarginsThatLeaveNoPixelAreIgnored) {
    for (const int margin : {-1000, -1, 0, 4, 5, 1000}) {
        GIMG<float> img(4, 4);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                img.row(y)[x] = static_cast<float>(4 * y + x);
            }
        }
        replicateBorderF32(img, margin, margin, margin, margin);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                EXPECT_EQ(img.row(y)[x], static_cast<float>(4 * y + x));
            }
        }
    }
    GIMG<float> nothing(0, 4);
    replicateBorderF32(nothing, 1, 1, 1, 1);
}

} // namespace
