#include "hosts/command/options/blurOf.h"

#include "hosts/command/arguments/NumberRange.h"

namespace velorn {
namespace {

constexpr NumberRange kAngles{-360.0f, 360.0f};

/// The extents whose kernels have no side above `kLargestKernelSide`.
NumberRange extents(AnalyticBlur::Shape shape) {
    switch (shape) {
    case AnalyticBlur::Shape::Gaussian:
        return {0.1f, 85.0f};
    case AnalyticBlur::Shape::Disc:
        return {0.1f, 255.0f};
    case AnalyticBlur::Shape::Motion:
        break;
    }
    return {1.0f, 510.0f};
}

} // namespace

std::string extentRange(AnalyticBlur::Shape shape) {
    return std::string("pixels, ") + extents(shape).text();
}

std::string angleRange() {
    return std::string("degrees, ") + kAngles.text();
}

AnalyticBlur blurOf(AnalyticBlur::Shape shape, float extent, float angle,
                    const std::string& option) {
    extents(shape).check(option, extent, " pixels");
    kAngles.check(option + ": the angle", angle, " degrees");
    return {shape, extent, angle};
}

} // namespace velorn
