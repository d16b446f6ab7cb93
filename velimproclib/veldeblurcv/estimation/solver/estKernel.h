#pragma once

#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

struct KernelSolveSettings {
    float lambda;  ///< Tikhonov weight
    float weight0; ///< weights of value, first and second differences: passed on, without effect
    float weight1;
    float weight2;
    float floor; ///< see `normaliseEstimate`
};

/// Estimates the blur kernel between a predicted sharp image and the blurred one, and normalises it
/// (normaliseEstimate.h). The model is a correlation: the kernel is not rotated by 180 degrees.
///
/// Without a selected pixel, or when no entry is positive, the kernel is all NaN.
/// @param edge     predicted sharp image, CV_8UC1
/// @param mask     selected pixels (not 0), CV_8UC1, same size
/// @param blurred  CV_8UC1, same size
/// @param kernel   CV_32FC1 with odd sides, overwritten in its own memory
/// @param progress advanced while the equations are summed
/// @return 1
/// @throws const char* when a side of the kernel is even or an image is not CV_8UC1;
///         std::bad_alloc or cv::Exception when memory is exhausted
int estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred, cv::Mat& kernel,
              const KernelSolveSettings& settings, CProgressSpan& progress);

} // namespace vel
