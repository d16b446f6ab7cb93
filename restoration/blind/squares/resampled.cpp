#include "restoration/blind/squares/resampled.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <cmath>

namespace restoration {

SquareKernel resampled(const SquareKernel& kernel, int side, double pitch) {
    SquareKernel result(side);
    const auto valueAt = [&](int row, int column) {
        const bool isInside = row >= 0 && column >= 0 && row < kernel.side && column < kernel.side;
        return isInside ? kernel.at(row, column) : 0.0;
    };
    const auto place = [&](int index) { return kernel.radius() + pitch * (index - side / 2); };
    for (int y = 0; y < side; ++y) {
        const double row = place(y);
        const int top = static_cast<int>(std::floor(row));
        const double down = row - top;
        for (int x = 0; x < side; ++x) {
            const double column = place(x);
            const int left = static_cast<int>(std::floor(column));
            const double right = column - left;
            result.at(y, x) =
                (1.0 - down) *
                    ((1.0 - right) * valueAt(top, left) + right * valueAt(top, left + 1)) +
                down *
                    ((1.0 - right) * valueAt(top + 1, left) + right * valueAt(top + 1, left + 1));
        }
    }
    scaleToUnitSum(result);
    return result;
}

} // namespace restoration
