#include "restoration/blind/parts/diagonalNoise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace restoration {

double diagonalNoise(const Plane& plane) {
    constexpr double kLeast = 0.2;
    constexpr double kMedianOfNormal = 0.6745;
    std::vector<float> details;
    for (int y = 0; y + 1 < plane.height(); y += 2) {
        const float* upper = plane.row(y);
        const float* lower = plane.row(y + 1);
        for (int x = 0; x + 1 < plane.width(); x += 2) {
            details.push_back(std::abs(upper[x] - lower[x] - upper[x + 1] + lower[x + 1]) / 2.0f);
        }
    }
    const auto middle = details.begin() + static_cast<std::ptrdiff_t>(details.size() / 2);
    std::nth_element(details.begin(), middle, details.end());
    return std::max(255.0 * static_cast<double>(*middle) / kMedianOfNormal, kLeast);
}

} // namespace restoration
