#include "restoration/blind/runs/startingKernel.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <cmath>

namespace restoration {
namespace {

constexpr double kStartingSigma = 0.8;

} // namespace

SquareKernel startingKernel(int side) {
    SquareKernel kernel(side);
    const int radius = kernel.radius();
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            kernel.at(y + radius, x + radius) =
                std::exp(-(x * x + y * y) / (2.0 * kStartingSigma * kStartingSigma));
        }
    }
    scaleToUnitSum(kernel);
    return kernel;
}

} // namespace restoration
