#include "restoration/blind/squares/recentre.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace restoration {

void recentre(SquareKernel& kernel) {
    const int radius = kernel.radius();
    double right = 0.0;
    double down = 0.0;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            right += (x - radius) * kernel.at(y, x);
            down += (y - radius) * kernel.at(y, x);
        }
    }
    const int moveX = static_cast<int>(std::floor(right + 0.5));
    const int moveY = static_cast<int>(std::floor(down + 0.5));
    SquareKernel moved(kernel.side);
    for (int y = std::max(0, -moveY); y < std::min(kernel.side, kernel.side - moveY); ++y) {
        for (int x = std::max(0, -moveX); x < std::min(kernel.side, kernel.side - moveX); ++x) {
            moved.at(y, x) = kernel.at(y + moveY, x + moveX);
        }
    }
    scaleToUnitSum(moved);
    kernel = std::move(moved);
}

} // namespace restoration
