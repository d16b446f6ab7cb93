#pragma once

#include "velimproclib/primitives/base/narrowToInt32.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Bytes from one row of `image` to the next, as an argument for the primitives. A step beyond 32
/// bits becomes the largest 32-bit integer.
inline std::int32_t stepOf(const cv::Mat& image) {
    return narrowToInt32(static_cast<std::int64_t>(image.step[0]));
}

} // namespace vel
