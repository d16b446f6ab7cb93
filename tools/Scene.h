#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace velorn::tools {

/// Draws a photograph-like view: a brick house with a shop, lettering, striped cloth and lit
/// windows under a cloudy sky, trees, wires, railings, paving and balls in the foreground.
///
/// The result is CV_32FC3, red first, 0..255, not rounded. It is drawn at twice the size and
/// reduced, so that its edges are as sharp as those of a good lens. The same arguments give the
/// same bits. `margin` more pixels are drawn on every side of `width` by `height`, for blurs that
/// reach beyond the frame. `seed` determines everything random.
cv::Mat drawScene(int width, int height, int margin, std::uint32_t seed);

} // namespace velorn::tools
