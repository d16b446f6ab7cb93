#include "restoration/tiles/joinEdges.h"

#include <cstddef>

namespace restoration {
namespace {

/// The share of the opposite edge in pixel `i` of a ring of `length` pixels.
float oppositeShare(int i, int length) noexcept {
    const float t = static_cast<float>(i + 1) / static_cast<float>(length + 1);
    return t * t * (3.0f - 2.0f * t);
}

float blend(float from, float to, float share) noexcept {
    return from + share * (to - from);
}

} // namespace

void joinEdges(Plane& plane, int width, int height) noexcept {
    for (int x = width; x < plane.width(); ++x) {
        const float share = oppositeShare(x - width, plane.width() - width);
        for (int y = 0; y < height; ++y) {
            float* row = plane.row(y);
            row[x] = blend(row[width - 1], row[0], share);
        }
    }
    const float* last = plane.row(height - 1);
    const float* first = plane.row(0);
    for (int y = height; y < plane.height(); ++y) {
        const float share = oppositeShare(y - height, plane.height() - height);
        float* row = plane.row(y);
        for (int x = 0; x < plane.width(); ++x) {
            row[x] = blend(last[x], first[x], share);
        }
    }
}

} // namespace restoration
