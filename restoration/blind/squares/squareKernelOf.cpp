#include "restoration/blind/squares/squareKernelOf.h"

#include "restoration/blind/squares/kernelSides.h"

#include <algorithm>

namespace restoration {

SquareKernel squareKernelOf(const Kernel& kernel, int side) {
    SquareKernel square(std::max(side, kernel.largerSide()));
    const int down = (square.side - kernel.height) / 2;
    const int right = (square.side - kernel.width) / 2;
    for (int y = 0; y < kernel.height; ++y) {
        for (int x = 0; x < kernel.width; ++x) {
            square.at(y + down, x + right) = std::max(static_cast<double>(kernel.at(y, x)), 0.0);
        }
    }
    return withSide(square, side);
}

} // namespace restoration
