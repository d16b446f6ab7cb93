#include "velimproclib/veldeblurcv/kernels/createMotionKernel.h"

#include "velimproclib/primitives/base/pi.h"
#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/veldeblurcv/kernels/normaliseKernel.h"
#include "velimproclib/veldeblurcv/kernels/zeroKernel.h"

#include <cmath>
#include <cstdint>

namespace vel {

namespace {

/// Folds an angle into 0..180 degrees, rounding after every step of 180. An angle too large for a
/// step to change it is folded by its remainder instead.
float foldedAngle(float angle) {
    while (angle < 0.0f || angle >= 180.0f) {
        const float next = toFloat(angle < 0.0f ? angle + 180.0 : angle - 180.0);
        if (next == angle) {
            const float remainder = std::fmod(angle, 180.0f);
            return remainder < 0.0f ? toFloat(remainder + 180.0) : remainder;
        }
        angle = next;
    }
    return angle;
}

/// One quadrant of the line, from the centre outward.
class LineQuadrant {
public:
    LineQuadrant(double length, float angle)
        : m_length(length), m_half(toFloat((length - 1.0) * 0.5)),
          m_cosine(toFloat(std::cos(radians(angle)))), m_sine(toFloat(std::sin(radians(angle)))) {}

    int direction() const { return m_cosine >= 0.0 ? 1 : -1; }
    bool risesToTheRight() const { return m_cosine > 0.0; }
    std::int64_t columns() const {
        const double reach = m_half * m_cosine + direction() - m_length * epsilon();
        return std::int64_t{truncateToInt(reach)} * direction() + 1;
    }
    std::int64_t rows() const {
        return std::int64_t{truncateToInt(m_half * m_sine + 1.0 - m_length * epsilon())} + 1;
    }

    /// Weight of the pixel: 1 on the line, falling to 0 one pixel away from it, with round ends.
    float weight(int row, int column) const {
        const double y = row;
        const double x = column * direction();
        double distance = toFloat(y * m_cosine - x * m_sine);
        const double radius = toFloat(std::sqrt(double{toFloat(x * x + y * y)}));
        if (m_half <= radius && std::fabs(distance) <= 1.0) {
            const double along = toFloat((x + distance * m_sine) / m_cosine);
            const double beyond = toFloat(m_half - std::fabs(along));
            distance = toFloat(std::sqrt(double{toFloat(distance * distance + beyond * beyond)}));
        }
        const float weight = toFloat((1.0 + epsilon()) - std::fabs(distance));
        return weight < 0.0f ? 0.0f : weight;
    }

    static double epsilon() { return 2.0 * std::pow(10.0, -16.0); }

private:
    static double radians(float degrees) { return toFloat((degrees / 180.0) * kPi); }

    double m_length;
    double m_half;
    double m_cosine;
    double m_sine;
};

/// Writes both halves of the line to `line` and returns the sum of the weights. The halves share
/// the centre, which the sum counts twice.
float drawLine(const LineQuadrant& quadrant, cv::Mat& line) {
    const int rows = line.rows / 2 + 1;
    const int columns = line.cols / 2 + 1;
    float sum = 0.0f;
    for (const int side : {-1, 1}) {
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const float weight = quadrant.weight(row, column);
                line.at<float>(rows - 1 + side * row, columns - 1 + side * column) = weight;
                sum += weight;
            }
        }
    }
    return sum;
}

} // namespace

cv::Mat createMotionKernel(float lengthArgument, float angleDegrees) {
    const double length = lengthArgument > 1.0f ? lengthArgument : 1.0f;
    const LineQuadrant quadrant(length, foldedAngle(angleDegrees));
    cv::Mat line = zeroKernel(2 * quadrant.rows() - 1, 2 * quadrant.columns() - 1);
    const float sum = drawLine(quadrant, line);
    const float centre = line.at<float>(line.rows / 2, line.cols / 2);
    const float divisor = toFloat(LineQuadrant::epsilon() * length * length + sum - centre);

    cv::Mat kernel = line;
    if (quadrant.risesToTheRight()) {
        kernel = cv::Mat();
        cv::flip(line, kernel, 0);
    }
    normaliseKernel(kernel, divisor);
    return kernel;
}

} // namespace vel
