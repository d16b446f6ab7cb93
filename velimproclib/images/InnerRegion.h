#pragma once

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// A plane without some columns at either side and some rows above and below, in the terms of the
/// primitives. A plane too small for that gives a width or height below 1, which they refuse.
template <class T>
struct InnerRegion {
    /// @param plane one channel of elements T; like any header of a plane it may be constant while
    /// its pixels are not
    InnerRegion(const cv::Mat& plane, int insetX, int insetY)
        : data(firstPixel(plane, insetX, insetY)), step(static_cast<std::int32_t>(plane.step[0])),
          w(plane.cols - 2 * insetX), h(plane.rows - 2 * insetY) {}

    T* data;
    std::int32_t step;
    std::int32_t w;
    std::int32_t h;

private:
    static T* firstPixel(const cv::Mat& plane, int insetX, int insetY) {
        if (plane.empty()) {
            return nullptr;
        }
        T* row = const_cast<T*>(plane.ptr<T>(std::min(insetY, plane.rows - 1)));
        return row + std::min(insetX, plane.cols - 1);
    }
};

} // namespace vel
