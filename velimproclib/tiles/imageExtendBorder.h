#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Replicates the edges of the loaded part of `plane` (CV_32FC1) into the margins around it; each
/// corner of the margin takes the value of the loaded part's corner.
///
/// The loaded part is the plane without the four margins, at least one pixel. A margin may be 0.
void imageExtendBorder(cv::Mat& plane, std::int32_t left, std::int32_t top, std::int32_t right,
                       std::int32_t bottom);

} // namespace vel
