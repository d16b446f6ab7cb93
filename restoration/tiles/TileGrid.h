#pragma once

#include "restoration/planes/Rect.h"
#include "restoration/tiles/planAxis.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// Where a tile lies in the picture and what it contributes.
struct PlannedTile {
    AxisTile columns;
    AxisTile rows;

    Rect window() const noexcept {
        return {columns.windowBegin, rows.windowBegin, columns.windowEnd - columns.windowBegin,
                rows.windowEnd - rows.windowBegin};
    }
    Rect kept() const noexcept {
        return {columns.keptBegin, rows.keptBegin, columns.keptEnd - columns.keptBegin,
                rows.keptEnd - rows.keptBegin};
    }
};

/// The tiles of a picture, in rows. They depend on the sides of the picture and on the rules only,
/// never on the region to restore.
class TileGrid {
public:
    TileGrid(int width, int height, int side, const AxisRules& rules)
        : m_side(side), m_columns(planAxis(width, rules)), m_rows(planAxis(height, rules)) {}

    /// Columns and rows of the square tiles, ring included.
    int side() const noexcept { return m_side; }

    /// The tiles whose kept parts touch `region`, row by row from the top left.
    std::vector<PlannedTile> touching(const Rect& region) const;

private:
    int m_side;
    std::vector<AxisTile> m_columns;
    std::vector<AxisTile> m_rows;
};

} // namespace restoration
