#include "restoration/clipping/WhiteNeighbours.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

constexpr int kReach = 2;
constexpr int kLargestSquaredDistance = 5;

struct Weights {
    double here;  ///< k(j)
    double there; ///< k(j + d)
};

double weightAt(const Kernel& kernel, int row, int column) noexcept {
    if (row < 0 || row >= kernel.height || column < 0 || column >= kernel.width) {
        return 0.0;
    }
    return std::max(0.0, static_cast<double>(kernel.at(row, column)));
}

/// The weights of all pixels that the kernel reaches.
std::vector<Weights> overlap(const Kernel& kernel, int dx, int dy) {
    std::vector<Weights> weights;
    for (int row = 0; row < kernel.height; ++row) {
        for (int column = 0; column < kernel.width; ++column) {
            const double here = weightAt(kernel, row, column);
            const double there = weightAt(kernel, row + dy, column + dx);
            if (here > 0.0 && there > 0.0) {
                weights.push_back({here, there});
            }
        }
    }
    return weights;
}

double leastValue(std::vector<Weights> weights, double tolerance) {
    std::sort(weights.begin(), weights.end(), [](const Weights& a, const Weights& b) {
        const double first = a.there * b.here;
        const double second = b.there * a.here;
        return first != second ? first > second : a.here > b.here;
    });
    double value = 0.0;
    for (const Weights& weight : weights) {
        const double share = std::min(1.0, tolerance / weight.here);
        tolerance -= share * weight.here;
        value += (1.0 - share) * weight.there;
    }
    return value;
}

} // namespace

WhiteNeighbours::WhiteNeighbours(const Kernel& kernel, float tolerance) {
    for (int dy = -kReach; dy <= kReach; ++dy) {
        for (int dx = -kReach; dx <= kReach; ++dx) {
            const int squared = dx * dx + dy * dy;
            if (squared == 0 || squared > kLargestSquaredDistance) {
                continue;
            }
            const double least = leastValue(overlap(kernel, dx, dy), double{tolerance});
            if (least > 0.0) {
                m_neighbours.push_back({dx, dy, static_cast<float>(least)});
            }
        }
    }
}

} // namespace restoration
