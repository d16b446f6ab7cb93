#pragma once

#include "velimproclib/primitives/base/narrowToInt32.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// The bytes between the rows of `image`, in the terms of the primitives. A step that they cannot
/// express becomes the largest that they can.
inline std::int32_t stepOf(const cv::Mat& image) {
    return narrowToInt32(static_cast<std::int64_t>(image.step[0]));
}

} // namespace vel
