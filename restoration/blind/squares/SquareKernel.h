#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restoration {

/// A kernel under estimation: a square of odd side, in double precision, in the orientation of
/// `Kernel`. The search works with squares; only its result is cut to a rectangle.
struct SquareKernel {
    int side = 0;
    std::vector<double> values;

    SquareKernel() = default;
    /// All zero.
    explicit SquareKernel(int s)
        : side(s), values(static_cast<std::size_t>(s) * static_cast<std::size_t>(s)) {}

    int radius() const noexcept { return side / 2; }
    double& at(int row, int column) noexcept { return values[index(row, column)]; }
    double at(int row, int column) const noexcept { return values[index(row, column)]; }
    /// Of the weights, row by row.
    double sum() const {
        double sum = 0.0;
        for (const double value : values) {
            sum += value;
        }
        return sum;
    }
    double largest() const { return *std::max_element(values.begin(), values.end()); }

private:
    std::size_t index(int row, int column) const noexcept {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(side) +
               static_cast<std::size_t>(column);
    }
};

} // namespace restoration
