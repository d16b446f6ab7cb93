#include "restoration/clipping/fillHollows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace restoration {
namespace {

constexpr float kOpen = std::numeric_limits<float>::lowest();

/// Continues the largest value of a line of unknown pixels.
void extend(float& largest, bool isKnown, float value) noexcept {
    largest = isKnown ? kOpen : std::max(largest, value);
}

/// Writes the lesser of the largest values to the left and to the right, the pixel included.
void boundSideways(const float* values, const std::uint8_t* known, const Rect& part,
                   float* bounds) noexcept {
    float largest = kOpen;
    for (int x = part.x; x < part.right(); ++x) {
        extend(largest, known[x] != 0, values[x]);
        bounds[x] = largest;
    }
    largest = kOpen;
    for (int x = part.right(); x-- > part.x;) {
        extend(largest, known[x] != 0, values[x]);
        bounds[x] = std::min(bounds[x], largest);
    }
}

/// Lowers the bounds of a row to the largest values of the rows before it, the row included.
void boundAlong(const float* values, const std::uint8_t* known, const Rect& part, float* largest,
                float* bounds) noexcept {
    for (int x = part.x; x < part.right(); ++x) {
        extend(largest[x], known[x] != 0, values[x]);
        bounds[x] = std::min(bounds[x], largest[x]);
    }
}

} // namespace

void fillHollows(Plane& channel, const Mask& known, const Rect& part, Plane& scratch,
                 const Cancellation& cancellation) {
    std::vector<float> largest(static_cast<std::size_t>(channel.width()), kOpen);
    for (int y = part.y; y < part.bottom(); ++y) {
        cancellation.check();
        boundSideways(channel.row(y), known.row(y), part, scratch.row(y));
        boundAlong(channel.row(y), known.row(y), part, largest.data(), scratch.row(y));
    }
    std::ranges::fill(largest, kOpen);
    for (int y = part.bottom(); y-- > part.y;) {
        cancellation.check();
        boundAlong(channel.row(y), known.row(y), part, largest.data(), scratch.row(y));
        for (int x = part.x; x < part.right(); ++x) {
            channel.row(y)[x] = std::max(channel.row(y)[x], scratch.row(y)[x]);
        }
    }
}

} // namespace restoration
