#include "restoration/blind/local/cellParts.h"

#include "restoration/threads/HostProgress.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace restoration {
namespace {

TEST(Cells, AreAbout300PixelsAndAtMostFive) {
    const auto columns = [](int width) { return cellsFor(Plane(width, 10)).columns; };
    EXPECT_EQ(columns(1), 1);
    EXPECT_EQ(columns(449), 1);
    EXPECT_EQ(columns(450), 2);
    EXPECT_EQ(columns(1349), 4);
    EXPECT_EQ(columns(1350), 5);
    EXPECT_EQ(columns(9000), 5);
    EXPECT_EQ(cellsFor(Plane(600, 1000)).rows, 3);
}

/// Pixels show where they are.
Plane places(int width, int height) {
    Plane plane(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            plane.row(y)[x] = static_cast<float>(y * width + x) / 1e6f;
        }
    }
    return plane;
}

TEST(CellParts, AreTheCellsAndTheirSurroundings) {
    const Plane picture = places(900, 600);
    Team team(1, HostProgress{});
    const std::vector<Plane> parts = cellParts(picture, {3, 2}, 480, team);
    ASSERT_EQ(parts.size(), 6U);
    for (const Plane& part : parts) {
        EXPECT_EQ(part.width(), 400);
        EXPECT_EQ(part.height(), 400);
    }
    EXPECT_EQ(parts[0].row(0)[0], picture.row(0)[0]);
    EXPECT_EQ(parts[1].row(0)[0], picture.row(0)[250]);
    EXPECT_EQ(parts[5].row(0)[0], picture.row(200)[500]);
}

TEST(CellParts, OfSmallCellsHave256Pixels) {
    const Plane picture = places(500, 240);
    Team team(1, HostProgress{});
    const std::vector<Plane> parts = cellParts(picture, {4, 2}, 480, team);
    for (const Plane& part : parts) {
        EXPECT_EQ(part.width(), 256);
        EXPECT_EQ(part.height(), 240);
    }
}

TEST(CellParts, OfLargeCellsLieWhereTheEdgesAre) {
    Plane picture(1000, 800);
    std::ranges::fill(picture.values(), 0.5f);
    const Plane edges = DrawnScene(120, 120, 5).plane();
    for (int y = 0; y < edges.height(); ++y) {
        std::copy_n(edges.row(y), edges.width(), picture.row(640 + y) + 840);
    }
    Team team(1, HostProgress{});
    const std::vector<Plane> parts = cellParts(picture, {2, 1}, 300, team);
    ASSERT_EQ(parts[1].width(), 300);
    ASSERT_EQ(parts[1].height(), 300);
    EXPECT_TRUE(std::ranges::any_of(parts[1].values(), [](float value) { return value != 0.5f; }));
}

TEST(CellParts, HoldNoValuesThatTransformsCannotTake) {
    Plane picture = places(400, 300);
    picture.row(10)[10] = std::numeric_limits<float>::quiet_NaN();
    Team team(1, HostProgress{});
    const std::vector<Plane> parts = cellParts(picture, {1, 1}, 480, team);
    for (const float value : parts.front().values()) {
        ASSERT_TRUE(std::isfinite(value));
    }
}

} // namespace
} // namespace restoration
