#pragma once

#include "restoration/planes/Plane.h"

#include <cstddef>

namespace restoration {

/// The equal cells of a picture, numbered row by row.
struct Cells {
    int columns = 1;
    int rows = 1;

    std::size_t count() const noexcept {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    }
    std::size_t at(int column, int row) const noexcept {
        return static_cast<std::size_t>(row * columns + column);
    }
    int columnOf(std::size_t cell) const noexcept { return static_cast<int>(cell) % columns; }
    int rowOf(std::size_t cell) const noexcept { return static_cast<int>(cell) / columns; }

    /// The same picture with each cell divided into four.
    Cells divided() const noexcept { return {2 * columns, 2 * rows}; }
};

/// Cells of about 300 pixels, at most 5 by 5.
Cells cellsFor(const Plane& picture);

} // namespace restoration
