#include "restoration/tiles/TileMerger.h"

#include "restoration/pictures/PictureBuffer.h"
#include "tests/restoration/tiles/madePicture.h"

#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr AxisRules kRules{40, 6, 5, 8};

/// Cuts a picture into tiles and merges them unchanged.
void expectReturn(int width, int height, const Rect& region) {
    MadePicture made(width, height, 4);
    made.picture().hasAlpha = 1;
    const PictureReader source(made.picture());
    VelornPicture format = made.picture();
    format.width = region.width;
    format.height = region.height;
    format.samples = VELORN_SAMPLES_F32;
    const PictureBuffer result(format);
    TileMerger merger(source, PictureWriter(result.picture()), region);
    for (const PlannedTile& plan : TileGrid(width, height, 64, kRules).touching(region)) {
        FinishedTile tile{plan, intersection(plan.kept(), region), {}};
        for (int c = 0; c < 3; ++c) {
            Plane& plane = tile.colours.emplace_back(tile.part.width, tile.part.height);
            for (int y = 0; y < tile.part.height; ++y) {
                source.readChannel(c, tile.part.y + y, tile.part.x, tile.part.width, plane.row(y));
            }
        }
        merger.merge(tile);
    }
    merger.finish();
    std::vector<float> row(static_cast<std::size_t>(region.width));
    for (int c = 0; c < 4; ++c) {
        for (int y = 0; y < region.height; ++y) {
            PictureReader(result.picture()).readChannel(c, y, 0, region.width, row.data());
            for (int x = 0; x < region.width; ++x) {
                ASSERT_NEAR(row[static_cast<std::size_t>(x)],
                            made.at(region.x + x, region.y + y, c), 3e-7f)
                    << c << " " << x << " " << y;
            }
        }
    }
}

TEST(TileMerger, UnchangedTilesGiveThePictureAndItsAlpha) {
    expectReturn(150, 130, {0, 0, 150, 130});
    expectReturn(20, 200, {0, 0, 20, 200});
    expectReturn(1, 1, {0, 0, 1, 1});
}

TEST(TileMerger, ARegionTakesTheTilesThatItTouches) {
    expectReturn(150, 130, {17, 23, 100, 40});
    expectReturn(150, 130, {149, 129, 1, 1});
    expectReturn(150, 130, {30, 0, 1, 130});
}

} // namespace
} // namespace restoration
