#pragma once

#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

/// Renews the latent image of a level: deconvolves `in` with `kernel`, block by block (side from
/// tiles/tileSide.h), at a fixed strength. A kernel of NaN entries gives black.
/// @param in,out CV_8UC1 of one size
/// @param kernel CV_32FC1
/// @param progress its next step is split into one part for each block
/// @throws const char* from `CBlockProcP1` and `CDeconvHL`; cv::Exception or std::bad_alloc when
///         memory is exhausted
void deconvLevel(const cv::Mat& in, const cv::Mat& kernel, cv::Mat& out, CProgressSpan& progress);

} // namespace vel
