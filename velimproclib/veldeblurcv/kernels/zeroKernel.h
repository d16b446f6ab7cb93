#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// A zero-filled kernel matrix, CV_32FC1.
/// @throws std::bad_alloc or cv::Exception when no matrix can have these sides
cv::Mat zeroKernel(std::int64_t rows, std::int64_t columns);

} // namespace vel
