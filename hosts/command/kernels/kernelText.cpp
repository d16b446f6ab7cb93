#include "hosts/command/kernels/kernelText.h"

#include "hosts/command/pictures/Orientation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

namespace velorn {
namespace {

std::string fixedText(double value, int decimals) {
    char digits[64];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    return {digits, end.ptr};
}

/// A length as precise as it is known.
std::string pixelsText(float length) {
    const auto value = static_cast<double>(length);
    return fixedText(value, value < 9.95 ? 1 : 0) + " pixels";
}

/// The sides of the rectangle around the weights above 0.
KernelSize contentSize(const BlurKernel& kernel) {
    int left = kernel.width;
    int right = -1;
    int top = kernel.height;
    int bottom = -1;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            if (kernel.at(r, c) > 0.0f) {
                left = std::min(left, c);
                right = std::max(right, c);
                top = std::min(top, r);
                bottom = r;
            }
        }
    }
    return {right - left + 1, bottom - top + 1};
}

} // namespace

double shownAngle(double stored, int orientation) {
    // A step along the direction; rows count downwards.
    const double radians = stored * std::numbers::pi / 180.0;
    const double right = std::cos(radians);
    const double down = -std::sin(radians);
    // Where the corners of a square of two by two pixels are displayed gives the directions of its
    // axes.
    const Orientation arrangement(orientation);
    const auto origin = arrangement.displayed({0, 0}, 2, 2);
    const auto rightOf = arrangement.displayed({0, 1}, 2, 2);
    const auto below = arrangement.displayed({1, 0}, 2, 2);
    const double x =
        right * (rightOf.column - origin.column) + down * (below.column - origin.column);
    const double y = right * (rightOf.row - origin.row) + down * (below.row - origin.row);
    const double degrees = std::atan2(-y, x) * 180.0 / std::numbers::pi;
    const double undirected = std::fmod(degrees + 360.0, 180.0);
    return undirected < 180.0 ? undirected : 0.0;
}

std::string blurText(const VelornFindReport& report, const BlurKernel& shown, int orientation) {
    switch (report.kind) {
    case VELORN_KIND_NONE:
        return "not blurred";
    case VELORN_KIND_GAUSSIAN:
        return "Gaussian of about " + pixelsText(report.extent);
    case VELORN_KIND_DISC:
        return "out of focus, radius about " + pixelsText(report.extent);
    case VELORN_KIND_MOTION: {
        // Rounding may give a half turn, which is the same direction as none.
        const long degrees =
            std::lround(shownAngle(static_cast<double>(report.angle), orientation)) % 180;
        return "motion of about " + pixelsText(report.extent) + " at " + std::to_string(degrees) +
               (degrees == 1 ? " degree" : " degrees");
    }
    default:
        return "camera shake within " + contentSize(shown).text() + " pixels";
    }
}

std::string misfitText(const VelornFindReport& report) {
    return fixedText(std::sqrt(static_cast<double>(report.misfit)), 1) + " times the noise";
}

std::string percentText(float share) {
    return fixedText(100.0 * static_cast<double>(share), 0) + " %";
}

} // namespace velorn
