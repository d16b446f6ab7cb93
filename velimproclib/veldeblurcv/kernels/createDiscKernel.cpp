#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"

#include "velimproclib/primitives/base/pi.h"
#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/veldeblurcv/kernels/normaliseKernel.h"
#include "velimproclib/veldeblurcv/kernels/zeroKernel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
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

/// Area that the disc covers of the pixel (x, y).
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

/// Area of the disc as the value of the centre pixel, at most half of pi; see `kHalfPi`.
float centreValue(double radius) {
    const float area = toFloat(kPi * radius * radius);
    return area < kHalfPi ? area : toFloat(kHalfPi);
}

/// Area of the disc's cap beyond the line at `edge`: the disc reaches slightly into the outermost
/// pixel of each axis.
float tipArea(double edge, double radius) {
    const double radius2 = radius * radius;
    const double m = toFloat(std::sqrt(double{toFloat(radius2 - square(edge))}));
    const double angle = toFloat(std::asin(double{toFloat(m / radius)}));
    const double sine = toFloat(std::sin(double{toFloat(2.0 * angle)}));
    return toFloat(2.0 * (radius2 * (0.5 * angle + 0.25 * sine) - m * edge));
}

/// The covered areas of the square around the disc, row by row; (0, 0) is the centre.
class Cells {
public:
    explicit Cells(int ring)
        : m_ring(ring), m_side(2 * static_cast<std::size_t>(ring) + 1), m_areas(m_side * m_side) {}

    double& operator()(int x, int y) {
        return m_areas[static_cast<std::size_t>(y + m_ring) * m_side +
                       static_cast<std::size_t>(x + m_ring)];
    }
    int ring() const { return m_ring; }
    const std::vector<double>& areas() const { return m_areas; }

private:
    int m_ring;
    std::size_t m_side;
    std::vector<double> m_areas;
};

void coverCells(Cells& cells, double radius) {
    const int ring = cells.ring();
    for (int y = -ring; y <= ring; ++y) {
        for (int x = -ring; x <= ring; ++x) {
            cells(x, y) = coveredArea(x, y, radius);
        }
    }
    cells(0, 0) = centreValue(radius);
}

/// Moves the tips of the disc into the ends of the axes.
void correctTips(Cells& cells, double radius) {
    const int ring = cells.ring();
    const double edge = ring - 0.5;
    if (ring < 1 || !(edge < radius && radius * radius < square(edge) + 0.25)) {
        return;
    }
    const double tip = tipArea(edge, radius);
    cells(ring, 0) = cells(-ring, 0) = cells(0, ring) = cells(0, -ring) = tip;
    // With a single ring all four neighbours are the centre, which then loses the tip four times.
    cells(ring - 1, 0) -= tip;
    cells(1 - ring, 0) -= tip;
    cells(0, ring - 1) -= tip;
    cells(0, 1 - ring) -= tip;
}

float sumOf(const std::vector<double>& areas) {
    float sum = 0.0f;
    for (const double area : areas) {
        sum = toFloat(sum + area);
    }
    return sum;
}

} // namespace

cv::Mat createDiscKernel(float radiusArgument) {
    const double radius = radiusArgument;
    const int ring = truncateToInt(radius + 1.0 - 0.5);
    const std::int64_t side = 2 * std::int64_t{ring} + 1;
    cv::Mat kernel = zeroKernel(side, side);

    Cells cells(ring);
    coverCells(cells, radius);
    correctTips(cells, radius);
    cells(0, 0) = std::min(cells(0, 0), 1.0);
    normaliseKernel(cells.areas(), sumOf(cells.areas()), kernel);
    return kernel;
}

} // namespace vel
