#include "hosts/command/commands/blurOf.h"

#include "hosts/command/arguments/NumberRange.h"

namespace velorn {
namespace {

constexpr NumberRange kAngles{-360.0f, 360.0f};

NumberRange extents(AnalyticBlur::Shape shape) {
    return {shape == AnalyticBlur::Shape::Motion ? 1.0f : 0.1f, 500.0f};
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
