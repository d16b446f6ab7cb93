#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restoration {

/// A blur kernel: odd sides, values row by row, sum 1, centre in the middle. A blurred plane is the
/// convolution of the sharp plane with the kernel.
struct Kernel {
    int width = 0;
    int height = 0;
    std::vector<float> values;
    /// Found in a picture, therefore not exact.
    bool isFound = false;

    int largerSide() const noexcept { return std::max(width, height); }
    float* row(int y) noexcept { return values.data() + offset(y); }
    const float* row(int y) const noexcept { return values.data() + offset(y); }
    float at(int row, int column) const noexcept {
        return values[offset(row) + static_cast<std::size_t>(column)];
    }

private:
    std::size_t offset(int y) const noexcept {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

} // namespace restoration
