#include "restoration/blind/parts/fillLamps.h"

#include "restoration/failures/Failure.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr int kSide = 120;

/// Rises from 0.2 to 0.44 from left to right.
Plane ramp() {
    Plane picture(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            picture.row(y)[x] = 0.2f + 0.002f * static_cast<float>(x);
        }
    }
    return picture;
}

/// A ramp with a square of `side` pixels of `value` at (50, 50), and a rim of `rim`.
Plane withSquare(int side, float value, float rim) {
    Plane picture = ramp();
    for (int y = 50 - 2; y < std::min(50 + side + 2, kSide); ++y) {
        for (int x = 50 - 2; x < std::min(50 + side + 2, kSide); ++x) {
            const bool isInside = std::min(x, y) >= 50 && std::max(x, y) < 50 + side;
            picture.row(y)[x] = isInside ? value : rim;
        }
    }
    return picture;
}

TEST(FillLamps, ContinuesTheSurroundings) {
    Plane picture = withSquare(9, 1.0f, 0.6f);
    EXPECT_EQ(fillLamps(picture, {}), 15U * 15U);
    const Plane expected = ramp();
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            EXPECT_NEAR(picture.row(y)[x], expected.row(y)[x], 2e-3f) << x << ' ' << y;
        }
    }
}

TEST(FillLamps, KeepsWhatIsNotWhite) {
    Plane picture = withSquare(9, 0.99f, 0.6f);
    EXPECT_EQ(fillLamps(picture, {}), 0U);
    EXPECT_EQ(picture.row(54)[54], 0.99f);
}

TEST(FillLamps, KeepsSinglePixels) {
    Plane picture = withSquare(1, 1.0f, 0.3f);
    EXPECT_EQ(fillLamps(picture, {}), 0U);
}

TEST(FillLamps, KeepsBlurredWhiteAreas) {
    Plane picture = withSquare(9, 1.0f, 0.9f);
    for (int y = 40; y < 70; ++y) {
        for (int x = 40; x < 70; ++x) {
            picture.row(y)[x] = std::max(picture.row(y)[x], 0.8f);
        }
    }
    EXPECT_EQ(fillLamps(picture, {}), 0U);
}

TEST(FillLamps, KeepsLargeWhiteAreas) {
    Plane picture = ramp();
    for (int y = 0; y < 20; ++y) {
        std::fill_n(picture.row(y) + 10, 97, 1.0f);
    }
    EXPECT_EQ(fillLamps(picture, {}), 0U);
    for (int y = 0; y < 20; ++y) {
        picture.row(y)[10] = 0.2f;
    }
    EXPECT_EQ(fillLamps(picture, {}), (96U + 6U) * (20U + 3U));
}

TEST(FillLamps, KeepsPicturesWithLightAboveWhite) {
    Plane picture = withSquare(9, 1.0f, 0.6f);
    picture.row(54)[54] = 1.5f;
    EXPECT_EQ(fillLamps(picture, {}), 0U);
}

TEST(FillLamps, KeepsAWhitePicture) {
    Plane picture(40, 40);
    std::ranges::fill(picture.values(), 1.0f);
    EXPECT_EQ(fillLamps(picture, {}), 0U);
    EXPECT_EQ(picture.row(20)[20], 1.0f);
}

TEST(FillLamps, EndsWhenCancelled) {
    Plane picture = withSquare(9, 1.0f, 0.6f);
    Cancellation cancellation;
    cancellation.request();
    EXPECT_THROW(fillLamps(picture, cancellation), Failure);
}

} // namespace
} // namespace restoration
