#pragma once

#include "velimproclib/tiles/imageExtendBorder.h"
#include "velimproclib/tiles/TileWalk.h"

#include <opencv2/core.hpp>

namespace vel {

/// Loads rows of a tile's plane (CV_32FC1): load(part) fills the pixels that lie on the image, then
/// the margins beside them take the nearest pixel. Together with the first row of the window the
/// margin above is filled, with the last row the one below. Therefore chunks of rows can load in
/// any order and side by side.
/// @param rows rows of the window, counted from its first
template <class Load>
void loadWindowRows(cv::Mat& plane, const TileWindow& window, cv::Range rows, const Load& load) {
    const int above = rows.start == 0 ? window.top : 0;
    const int below = rows.end == window.height ? window.bottom : 0;
    cv::Mat part = plane.rowRange(window.top + rows.start - above, window.top + rows.end + below);
    cv::Mat loaded = part(cv::Rect(window.left, above, window.width, rows.size()));
    load(loaded);
    imageExtendBorder(part, window.left, above, window.right, below);
}

} // namespace vel
