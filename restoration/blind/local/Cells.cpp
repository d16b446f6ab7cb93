#include "restoration/blind/local/Cells.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

constexpr double kCellSide = 300.0;
constexpr int kMostCells = 5;

} // namespace

Cells cellsFor(const Plane& picture) {
    const auto along = [](int length) {
        return std::clamp(static_cast<int>(std::floor(length / kCellSide + 0.5)), 1, kMostCells);
    };
    return {along(picture.width()), along(picture.height())};
}

} // namespace restoration
