#pragma once

#include "restoration/pictures/PictureReader.h"
#include "restoration/pictures/PictureWriter.h"
#include "restoration/planes/Plane.h"
#include "restoration/tiles/TileGrid.h"

#include <vector>

namespace restoration {

/// What a tile contributes to the result.
struct FinishedTile {
    PlannedTile plan;
    Rect part;                  ///< of the picture; inside the tile's kept part
    std::vector<Plane> colours; ///< of `part`; as the result stores them
    double clippedPixels = 0.0; ///< of `part`, with the weights of the cross-fades
};

/// Cross-fades finished tiles into the result. Tiles come row by row, from left to right, as
/// `TileGrid::touching` lists them. The merger holds one row of tiles as floats and writes the rows
/// of the result as soon as no tile below reaches them; alpha comes from the source.
class TileMerger {
public:
    /// @param region  the part of the source that the result shows
    /// @throws std::bad_alloc
    TileMerger(const PictureReader& source, const PictureWriter& result, const Rect& region);

    /// @throws std::bad_alloc
    void merge(const FinishedTile& tile);

    /// Writes the rows that are left. Must follow the last tile.
    void finish();

private:
    void moveTo(int top);
    void growTo(int bottom);
    void writeRow(int y);
    std::size_t stripRow(int y) const noexcept { return static_cast<std::size_t>(y - m_top); }

    PictureReader m_source;
    PictureWriter m_result;
    Rect m_region;
    int m_top;    ///< first row in the strip
    int m_bottom; ///< row after the last one
    /// For each colour channel the rows m_top..m_bottom - 1 of the region.
    std::vector<std::vector<float>> m_strips;
    std::vector<float> m_alpha;
    std::vector<float> m_columnWeights;
};

} // namespace restoration
