#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/kernels/KernelGrid.h"
#include "restoration/kernels/largestSide.h"

#include <algorithm>
#include <span>
#include <vector>

namespace restoration {

/// The blur of a picture: none, the same everywhere, or one that differs from place to place. The
/// kernels outlive it.
class PictureBlur {
public:
    /// @param kernels  none, one for all colour channels, or one for each
    explicit PictureBlur(std::span<const Kernel* const> kernels)
        : m_kernels(kernels.begin(), kernels.end()),
          m_largestSide(restoration::largestSide(kernels)) {}
    explicit PictureBlur(const KernelGrid& grid)
        : m_kernels{&grid.typical()}, m_grid(&grid),
          m_largestSide(std::max(grid.width(), grid.height())) {}

    /// The kernels that choices for the whole picture rest on.
    std::span<const Kernel* const> kernels() const noexcept { return m_kernels; }
    /// Null: the same blur everywhere.
    const KernelGrid* grid() const noexcept { return m_grid; }
    int largestSide() const noexcept { return m_largestSide; }

private:
    std::vector<const Kernel*> m_kernels;
    const KernelGrid* m_grid = nullptr;
    int m_largestSide;
};

} // namespace restoration
