#include "restoration/tiles/TileGrid.h"

namespace restoration {

std::vector<PlannedTile> TileGrid::touching(const Rect& region) const {
    std::vector<PlannedTile> tiles;
    for (const AxisTile& rows : m_rows) {
        for (const AxisTile& columns : m_columns) {
            const PlannedTile tile{columns, rows};
            if (!intersection(tile.kept(), region).isEmpty()) {
                tiles.push_back(tile);
            }
        }
    }
    return tiles;
}

} // namespace restoration
