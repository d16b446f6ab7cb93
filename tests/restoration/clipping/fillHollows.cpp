#include "restoration/clipping/fillHollows.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <utility>

namespace restoration {
namespace {

constexpr int kSide = 12;
constexpr Rect kAll{0, 0, kSide, kSide};

/// A dark plane with a ring of light around (5, 5): bright, weaker in its last row.
Plane ring() {
    Plane plane(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const int distance = std::max(std::abs(x - 5), std::abs(y - 5));
            plane.row(y)[x] = distance == 2 ? (y == 7 ? 3.0f : 4.0f) : 0.1f;
        }
    }
    return plane;
}

/// The pixels up to three from (5, 5) are unknown.
Mask unknownSquare() {
    Mask known(kSide, kSide);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            known.row(y)[x] = std::max(std::abs(x - 5), std::abs(y - 5)) > 3 ? 1 : 0;
        }
    }
    return known;
}

Plane filled(Plane plane, const Mask& known, const Rect& part = kAll) {
    Plane scratch(kSide, kSide);
    fillHollows(plane, known, part, scratch, Cancellation());
    return plane;
}

TEST(FillHollows, AnEnclosedPixelRisesToTheLowestSideOfItsRim) {
    const Plane result = filled(ring(), unknownSquare());
    for (int y = 4; y <= 6; ++y) {
        for (int x = 4; x <= 6; ++x) {
            EXPECT_EQ(result.row(y)[x], 3.0f);
        }
    }
}

TEST(FillHollows, PixelsOutsideTheRimStay) {
    const Plane sharp = ring();
    const Plane result = filled(ring(), unknownSquare());
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            if (std::max(std::abs(x - 5), std::abs(y - 5)) >= 2) {
                EXPECT_EQ(result.row(y)[x], sharp.row(y)[x]) << x << ", " << y;
            }
        }
    }
}

TEST(FillHollows, AGapInTheRimOpensItsLineOnly) {
    for (const auto& [x, y] : {std::pair(3, 5), {7, 5}, {5, 3}, {5, 7}}) {
        Plane open = ring();
        open.row(y)[x] = 0.1f;
        const Plane result = filled(std::move(open), unknownSquare());
        EXPECT_EQ(result.row(5)[5], 0.1f);
        EXPECT_EQ(result.row(4)[4], 3.0f);
    }
}

TEST(FillHollows, KnownPixelsStayAndEndTheLinesOfUnknownOnes) {
    Mask known = unknownSquare();
    known.row(5)[4] = 1;
    const Plane result = filled(ring(), known);
    EXPECT_EQ(result.row(5)[4], 0.1f);
    EXPECT_EQ(result.row(5)[5], 0.1f); // nothing bright before the known pixel to its left
    EXPECT_EQ(result.row(4)[5], 3.0f);
}

TEST(FillHollows, LightBeyondThePictureDoesNotCount) {
    const Plane result = filled(ring(), unknownSquare(), {0, 0, 7, kSide});
    EXPECT_EQ(result.row(5)[5], 0.1f);
}

} // namespace
} // namespace restoration
