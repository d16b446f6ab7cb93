#include "restoration/blind/analytic/strokeKernel.h"

#include "restoration/blind/squares/kernelSides.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace restoration {

SquareKernel strokeKernel(double stroke, double degrees) {
    constexpr int kPlacesPerPixel = 16;
    const double angle = degrees * std::numbers::pi / 180.0;
    const double right = 0.5 * stroke * std::cos(angle);
    const double up = 0.5 * stroke * std::sin(angle);
    const int radius = static_cast<int>(std::max(std::abs(right), std::abs(up))) + 1;
    SquareKernel kernel(2 * radius + 1);
    const int places = static_cast<int>(std::ceil(kPlacesPerPixel * stroke)) + 1;
    for (int i = 0; i < places; ++i) {
        const double share = (2.0 * i + 1.0) / places - 1.0;
        const double x = radius + share * right;
        const double y = radius - share * up;
        const int column = static_cast<int>(x);
        const int row = static_cast<int>(y);
        const double beyond = x - column;
        const double below = y - row;
        kernel.at(row, column) += (1.0 - beyond) * (1.0 - below);
        kernel.at(row, column + 1) += beyond * (1.0 - below);
        kernel.at(row + 1, column) += (1.0 - beyond) * below;
        kernel.at(row + 1, column + 1) += beyond * below;
    }
    return withSide(kernel, kernel.side);
}

} // namespace restoration
