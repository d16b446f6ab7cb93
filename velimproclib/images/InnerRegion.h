#pragma once

#include "velimproclib/images/stepOf.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// The inner part of a plane, without `insetX` columns at both sides and `insetY` rows at the top
/// and bottom, as arguments for the primitives. If the plane is too small, the width or height is
/// below 1, which the primitives refuse.
template <class T>
struct InnerRegion {
    /// @param plane one channel of elements T. A constant header does not make its pixels constant.
    InnerRegion(const cv::Mat& plane, int insetX, int insetY)
        : data(firstPixel(plane, insetX, insetY)), step(stepOf(plane)), w(plane.cols - 2 * insetX),
          h(plane.rows - 2 * insetY) {}

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
