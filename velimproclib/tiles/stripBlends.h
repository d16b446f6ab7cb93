#pragma once

#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/tiles/blend.h"
#include "velimproclib/tiles/fillRamp.h"
#include "velimproclib/tiles/forRowChunks.h"
#include "velimproclib/tiles/TileWalk.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>
#include <span>

/// The blends by which overlapping tiles become one image. `T` is the image's element type, 8 or 16
/// bits wide. Plain loops: only overlaps are blended, which are narrow as a rule, and wide only
/// where the last tile of an axis is pulled back to the image's end.
namespace vel {

/// Fades a row of a new tile in over what its left neighbour left in the strip: `values[x]` becomes
/// the blend of `strip[x * channels]` and itself by `ramp[x]`. Nothing is rounded to `T` here.
template <class T>
void fadeInColumns(float* values, const T* strip, std::size_t channels, const float* ramp,
                   std::size_t count) noexcept {
    for (std::size_t x = 0; x < count; ++x) {
        values[x] = blend(strip[x * channels], static_cast<double>(values[x]), ramp[x]);
    }
}

/// Fades a row of the finished strip in over the target's, by one weight within 0..1, truncating to
/// `T`. `target` may stand at any address.
template <class T>
void fadeInRow(const T* strip, T* target, float weight, std::size_t count) noexcept {
    Unaligned<T>* row = unaligned(target);
    for (std::size_t i = 0; i < count; ++i) {
        // Between two values of T, so no conversion can leave its range.
        row[i].value = static_cast<T>(static_cast<int>(blend(row[i].value, strip[i], weight)));
    }
}

/// Merges the finished strip of the row of tiles that `walk` stands in into the rows of `target`
/// that it covers: faded in over the rows that are finished already, copied from there on.
/// @param strip,target elements `T`, of one type and width, that of the walk's image
/// @param ramp room for the weights of the overlap, which must not be negative, and one more
template <class T>
void mergeStrip(const cv::Mat& strip, cv::Mat& target, const TileWalk& walk,
                std::span<float> ramp) {
    const std::int32_t height = walk.storedHeight();
    const auto overlap = static_cast<std::int32_t>(walk.overlapY());
    const std::size_t count =
        static_cast<std::size_t>(strip.cols) * static_cast<std::size_t>(strip.channels());
    fillRamp(ramp, overlap);
    forRowChunks(strip.cols, height, [&](cv::Range rows) {
        for (std::int32_t y = rows.start; y < rows.end; ++y) {
            const T* const fresh = reinterpret_cast<const T*>(strip.ptr(y));
            T* const row = reinterpret_cast<T*>(target.ptr(walk.m_curY + y));
            if (y >= overlap) {
                std::memcpy(row, fresh, count * sizeof(T));
            } else {
                fadeInRow(fresh, row, ramp[static_cast<std::size_t>(y)], count);
            }
        }
    });
}

} // namespace vel
