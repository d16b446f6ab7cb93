#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace restoration {

/// How far a restoration with automatic settings may rely on a kernel. The default is for exact
/// kernels.
struct Trust {
    /// The highest strength: errors of the kernel make artefacts that grow with the strength.
    float strongest = std::numeric_limits<float>::infinity();
    /// The share of the restoration in the result, 0..1; the rest is the picture itself.
    float share = 1.0f;
};

/// A blur kernel: odd sides, values row by row, sum 1, centre in the middle. A blurred plane is the
/// convolution of the sharp plane with the kernel.
struct Kernel {
    int width = 0;
    int height = 0;
    std::vector<float> values;
    Trust trust{};

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
