#include "restoration/blind/squares/moveKernel.h"

#include "restoration/blind/squares/likeness.h"
#include "restoration/blind/squares/scaleToUnitSum.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

/// Adds `value` to the up to four pixels that share a place.
void addAt(double right, double down, double value, SquareKernel& kernel) {
    const double x = right + kernel.radius();
    const double y = down + kernel.radius();
    const int left = static_cast<int>(std::floor(x));
    const int top = static_cast<int>(std::floor(y));
    for (int row = top; row <= top + 1; ++row) {
        for (int column = left; column <= left + 1; ++column) {
            if (row >= 0 && column >= 0 && row < kernel.side && column < kernel.side) {
                kernel.at(row, column) +=
                    value * (1.0 - std::abs(x - column)) * (1.0 - std::abs(y - row));
            }
        }
    }
}

/// The kernel smoothed by a pixel, so that the likeness changes evenly with a move.
SquareKernel spread(const SquareKernel& kernel) {
    constexpr double kNeighbour = 0.5;
    SquareKernel wide(kernel.side);
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            for (int row = std::max(y - 1, 0); row <= std::min(y + 1, kernel.side - 1); ++row) {
                for (int column = std::max(x - 1, 0); column <= std::min(x + 1, kernel.side - 1);
                     ++column) {
                    wide.at(y, x) += (row == y ? 1.0 : kNeighbour) *
                                     (column == x ? 1.0 : kNeighbour) * kernel.at(row, column);
                }
            }
        }
    }
    return wide;
}

} // namespace

KernelPlace centreOf(const SquareKernel& kernel) {
    KernelPlace centre;
    double sum = 0.0;
    const int radius = kernel.radius();
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            const double value = kernel.at(y + radius, x + radius);
            centre.right += x * value;
            centre.down += y * value;
            sum += value;
        }
    }
    return {centre.right / sum, centre.down / sum};
}

SquareKernel moved(const SquareKernel& kernel, const KernelPlace& by) {
    SquareKernel result(kernel.side);
    const int radius = kernel.radius();
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            const double value = kernel.at(y + radius, x + radius);
            if (value > 0.0) {
                addAt(x + by.right, y + by.down, value, result);
            }
        }
    }
    scaleToUnitSum(result);
    return result;
}

KernelPlace bestMove(const SquareKernel& kernel, const SquareKernel& reference) {
    constexpr int kReach = 4;
    const SquareKernel wide = spread(reference);
    const auto likenessAt = [&](int right, int down) {
        return sumOfProducts(wide, kernel, right, down);
    };
    int right = 0;
    int down = 0;
    double best = -1.0;
    for (int y = -kReach; y <= kReach; ++y) {
        for (int x = -kReach; x <= kReach; ++x) {
            const double value = likenessAt(x, y);
            if (value > best) {
                best = value;
                right = x;
                down = y;
            }
        }
    }
    // The top of the parabola through the best place and its neighbours.
    const auto top = [&](double before, double after) {
        const double bend = before - 2.0 * best + after;
        return bend < 0.0 ? std::clamp(0.5 * (before - after) / bend, -0.5, 0.5) : 0.0;
    };
    return {right + top(likenessAt(right - 1, down), likenessAt(right + 1, down)),
            down + top(likenessAt(right, down - 1), likenessAt(right, down + 1))};
}

} // namespace restoration
