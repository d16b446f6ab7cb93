#pragma once

namespace restoration {

/// The columns and rows that a kernel may have; odd.
struct KernelBounds {
    int width = 0;
    int height = 0;

    int side() const noexcept { return width > height ? width : height; }
    int smallerSide() const noexcept { return width < height ? width : height; }
};

} // namespace restoration
