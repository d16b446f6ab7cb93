#pragma once

#include <opencv2/core.hpp>
#include <span>

namespace vel {

/// Builds the levels of the estimation from the finest, which is level 0.
///
/// Each level halves the image and the side of the kernel. The coarsest level is the first whose
/// kernel is 3 by 3 or whose image has fewer than 32 columns or rows, or the last that `images` has
/// room for. Kernels above level 0 are square. A level 0 kernel of at most 3 pixels has no other
/// level.
///
/// @param images one entry for each possible level: entry 0 is the image, CV_8UC1, not empty; the
///               entries of coarser levels are created
/// @param kernels as many entries: entry 0 is the kernel, CV_32FC1, not empty; the entries of
///                coarser levels are created, their values undefined
/// @return the index of the coarsest level
/// @throws cv::Exception when memory is exhausted
int buildPyramid(std::span<cv::Mat> images, std::span<cv::Mat> kernels);

} // namespace vel
