#include "restoration/blind/squares/largestVariance.h"

#include <cmath>

namespace restoration {

double largestVariance(const SquareKernel& kernel) {
    double sum = 0.0;
    double right = 0.0;
    double down = 0.0;
    double level = 0.0;
    double upright = 0.0;
    double mixed = 0.0;
    for (int row = 0; row < kernel.side; ++row) {
        for (int column = 0; column < kernel.side; ++column) {
            const double weight = kernel.at(row, column);
            const int x = column - kernel.radius();
            const int y = row - kernel.radius();
            sum += weight;
            right += weight * x;
            down += weight * y;
            level += weight * x * x;
            upright += weight * y * y;
            mixed += weight * x * y;
        }
    }
    right /= sum;
    down /= sum;
    level = level / sum - right * right;
    upright = upright / sum - down * down;
    mixed = mixed / sum - right * down;
    return (level + upright) / 2.0 + std::hypot((level - upright) / 2.0, mixed);
}

} // namespace restoration
