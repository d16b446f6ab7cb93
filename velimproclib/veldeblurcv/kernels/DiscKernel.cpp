#include "velimproclib/veldeblurcv/kernels/DiscKernel.h"

#include "velimproclib/primitives/base/pi.h"
#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/veldeblurcv/kernels/KernelMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace vel {

namespace {

double square(double value) {
    return value * value;
}

/// Area that the disc covers of the unit square at (a, b), 0 <= b <= a, when its rim crosses the
/// square: the circle segment between the abscissas m1 and m2, where the rim leaves the square.
float rimArea(double a, double b, double radius) {
    const double radius2 = radius * radius;
    const double farA = toFloat(square(a + 0.5) + square(b - 0.5));
    const double farB = toFloat(square(a - 0.5) + square(b + 0.5));
    const double m1 = farA > radius2
                          ? b - 0.5
                          : double{toFloat(std::sqrt(double{toFloat(radius2 - square(a + 0.5))}))};
    const double m2 = farB < radius2
                          ? b + 0.5
                          : double{toFloat(std::sqrt(double{toFloat(radius2 - square(a - 0.5))}))};
    const double angle1 = toFloat(std::asin(double{toFloat(m1 / radius)}));
    const double angle2 = toFloat(std::asin(double{toFloat(m2 / radius)}));
    const double sine1 = toFloat(std::sin(double{toFloat(2.0 * angle1)}));
    const double sine2 = toFloat(std::sin(double{toFloat(2.0 * angle2)}));
    const double segment = toFloat(0.25 * (sine2 - sine1) + 0.5 * (angle2 - angle1));
    return toFloat(radius2 * segment + ((m1 - b + 0.5) - (a - 0.5) * (m2 - m1)));
}

double coveredArea(int x, int y, double radius) {
    const double a = std::max(std::abs(x), std::abs(y));
    const double b = std::min(std::abs(x), std::abs(y));
    const double radius2 = radius * radius;
    const double farthest = toFloat(square(a + 0.5) + square(b + 0.5));
    const double nearest = toFloat(square(a - 0.5) + square(b - 0.5));
    const bool onRim = (farthest > radius2 && nearest < radius2) ||
                       (b == 0.0 && a - 0.5 < radius && radius < a + 0.5);
    double area = onRim ? rimArea(a, b, radius) : 0.0;
    if (farthest < radius2) {
        area += 1.0;
    }
    return area;
}

float centreValue(double radius) {
    const float area = toFloat(kPi * radius * radius);
    return area < kHalfPi ? area : toFloat(kHalfPi);
}

/// The cap of the disc that pokes through the outermost pixel of an axis at `edge`.
float tipArea(double edge, double radius) {
    const double radius2 = radius * radius;
    const double m = toFloat(std::sqrt(double{toFloat(radius2 - square(edge))}));
    const double angle = toFloat(std::asin(double{toFloat(m / radius)}));
    const double sine = toFloat(std::sin(double{toFloat(2.0 * angle)}));
    return toFloat(2.0 * (radius2 * (0.5 * angle + 0.25 * sine) - m * edge));
}

} // namespace

cv::Mat createDiscKernel(float radiusArgument) {
    const double radius = radiusArgument;
    const int ring = truncateToInt(radius + 1.0 - 0.5);
    cv::Mat kernel = zeroKernel(2 * std::int64_t{ring} + 1, 2 * std::int64_t{ring} + 1);
    const auto side = static_cast<std::size_t>(kernel.rows);
    std::vector<double> area(side * side);
    const auto cell = [&](int x, int y) -> double& {
        return area[static_cast<std::size_t>(y + ring) * side + static_cast<std::size_t>(x + ring)];
    };

    for (int y = -ring; y <= ring; ++y) {
        for (int x = -ring; x <= ring; ++x) {
            cell(x, y) = coveredArea(x, y, radius);
        }
    }
    cell(0, 0) = centreValue(radius);

    const double edge = ring - 0.5;
    if (ring > 0 && edge < radius && radius * radius < square(edge) + 0.25) {
        const double tip = tipArea(edge, radius);
        cell(ring, 0) = cell(-ring, 0) = cell(0, ring) = cell(0, -ring) = tip;
        // With a single ring all four neighbours are the centre, which then loses the tip four
        // times.
        cell(ring - 1, 0) -= tip;
        cell(1 - ring, 0) -= tip;
        cell(0, ring - 1) -= tip;
        cell(0, 1 - ring) -= tip;
    }
    cell(0, 0) = std::min(cell(0, 0), 1.0);

    float sum = 0.0f;
    for (const double value : area) {
        sum = toFloat(sum + value);
    }
    std::transform(area.begin(), area.end(), kernel.ptr<float>(),
                   [sum](double value) { return toFloat(value / sum); });
    return kernel;
}

} // namespace vel
