#include "restoration/blind/squares/cutToContent.h"

#include <algorithm>
#include <cstdlib>

namespace restoration {

Kernel cutToContent(const SquareKernel& square, const KernelBounds& bounds) {
    const int radius = square.radius();
    int columns = 0;
    int rows = 0;
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            if (square.at(y + radius, x + radius) > 0.0) {
                columns = std::max(columns, std::abs(x));
                rows = std::max(rows, std::abs(y));
            }
        }
    }
    columns = std::min({columns + 1, bounds.width / 2, radius});
    rows = std::min({rows + 1, bounds.height / 2, radius});
    Kernel kernel{2 * columns + 1, 2 * rows + 1, {}};
    for (int y = -rows; y <= rows; ++y) {
        for (int x = -columns; x <= columns; ++x) {
            kernel.values.push_back(static_cast<float>(square.at(y + radius, x + radius)));
        }
    }
    return kernel;
}

} // namespace restoration
