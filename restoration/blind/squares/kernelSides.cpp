#include "restoration/blind/squares/kernelSides.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <algorithm>
#include <cmath>

namespace restoration {

int extentOf(const SquareKernel& kernel) {
    const int radius = kernel.radius();
    int reach = 0;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            if (kernel.at(y, x) > 0.0) {
                reach = std::max({reach, std::abs(y - radius), std::abs(x - radius)});
            }
        }
    }
    return 2 * reach + 1;
}

SquareKernel withSide(const SquareKernel& kernel, int side) {
    SquareKernel result(side);
    const int shift = side / 2 - kernel.radius();
    for (int y = std::max(0, shift); y < std::min(side, kernel.side + shift); ++y) {
        for (int x = std::max(0, shift); x < std::min(side, kernel.side + shift); ++x) {
            result.at(y, x) = kernel.at(y - shift, x - shift);
        }
    }
    scaleToUnitSum(result);
    return result;
}

} // namespace restoration
