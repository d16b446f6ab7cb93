#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

/// Splits a luminance plane (CV_32FC1) into an upper and a lower part that overlap, for work on two
/// threads, and merges the parts. Both functions run on the calling thread.
namespace vel {

/// Makes `top` a view of the first and `bottom` a view of the last rows of `plane`, each half of
/// its rows plus `extra`. The views share the plane's pixels: copy them before you change one.
/// @return the number of rows of each part
/// @throws cv::Exception when the plane has fewer rows than that
std::int32_t splitTileHalves(const cv::Mat& plane, cv::Mat& top, cv::Mat& bottom,
                             std::int32_t extra);

/// Writes `plane` from its two parts: `top` begins at its first row, `bottom` ends at its last row.
/// Over the middle third of the overlap `top` fades into `bottom`. Each outer third comes from the
/// part whose own edge is farther away, because results near the edge of a part are less reliable.
/// @throws const char* "TBMerge: not enough overlap" when the overlap has fewer than 5 rows, or 6;
/// cv::Exception when a part does not fit the plane
void TBMerge(const cv::Mat& top, const cv::Mat& bottom, cv::Mat& plane);

} // namespace vel
