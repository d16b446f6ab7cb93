#pragma once

#include "restoration/kernels/Kernel.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The blur of a picture in which it differs from place to place. The picture is divided into equal
/// cells. Each kernel is the blur at the middle of its cell; between the middles the blur changes
/// linearly, beyond the outer ones it stays the same. Constant after construction.
class KernelGrid {
public:
    /// @param kernels  columns * rows kernels, row by row; at least one
    /// @throws std::bad_alloc
    KernelGrid(std::vector<Kernel> kernels, int columns, int rows);

    int columns() const noexcept { return m_columns; }
    int rows() const noexcept { return m_rows; }
    const Kernel& at(int column, int row) const noexcept { return m_kernels[index(column, row)]; }

    /// Columns and rows that hold every kernel; odd.
    int width() const noexcept { return m_width; }
    int height() const noexcept { return m_height; }

    /// Whether all kernels have the same values.
    bool isUniform() const;

    /// The kernel at a place of the picture, in shares of its width and height: the mean of the
    /// kernels of up to four cells, with weights by distance. Its sides are `width()` and
    /// `height()`. The share in its trust is a mean, too.
    /// @throws std::bad_alloc
    Kernel interpolated(double x, double y) const;

    /// The kernel that differs least from the mean of all: the one that choices for the whole
    /// picture rest on.
    const Kernel& typical() const noexcept { return m_kernels[m_typical]; }

private:
    Kernel empty() const;
    void findTypical();
    std::size_t index(int column, int row) const noexcept {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) +
               static_cast<std::size_t>(column);
    }

    std::vector<Kernel> m_kernels;
    int m_columns;
    int m_rows;
    int m_width = 1;
    int m_height = 1;
    std::size_t m_typical = 0;
};

} // namespace restoration
