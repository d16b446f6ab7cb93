#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

/// The cut of a luminance plane (CV_32FC1) into an upper and a lower part that overlap, for work on
/// two threads, and its undoing. Both serve the calling thread only.
namespace vel {

/// Gives `top` the first and `bottom` the last rows of `plane`, half of its rows and `extra` each.
/// Both are views that share the plane's pixels: copy them before changing one.
/// @return the rows of each part
/// @throws cv::Exception when the plane has fewer rows than that
std::int32_t splitTileHalves(const cv::Mat& plane, cv::Mat& top, cv::Mat& bottom,
                             std::int32_t extra);

/// Writes `plane` from its two parts: `top` begins at its first row, `bottom` ends at its last, and
/// over the middle third of their overlap one fades into the other. The outer thirds, where the
/// parts' own edges may show, come from the part that lies deeper in them.
/// @throws const char* when the overlap is too small for that: up to 4 rows, and 6;
///         cv::Exception when a part does not fit the plane
void TBMerge(const cv::Mat& top, const cv::Mat& bottom, cv::Mat& plane);

} // namespace vel
