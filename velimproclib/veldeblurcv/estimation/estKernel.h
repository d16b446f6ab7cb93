#pragma once

#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

/// What the kernel solve is told besides the images.
struct KernelSolveSettings {
    float lambda;  ///< Tikhonov weight
    float weight0; ///< weights of value, first and second differences: handed on, without effect
    float weight1;
    float weight2;
    float floor; ///< fraction of the peak below which an entry counts as nothing
};

/// Estimates the blur kernel between a predicted sharp image and the blurred one, and cleans it:
/// entries below the floor, the negative ones among them, become 0, the others come down by half
/// the floor, and the whole is scaled to sum 1.
///
/// Without a selected pixel, or when no entry reaches above 0, the kernel is all NaN.
/// @param edge     predicted sharp image, CV_8UC1
/// @param mask     pixels that count (not 0), CV_8UC1, same size
/// @param blurred  CV_8UC1, same size
/// @param kernel   CV_32FC1 with odd sides, overwritten in its own memory
/// @param progress advanced while the equations are summed; may be null
/// @return 1
/// @throws const char* when a side of the kernel is even or an image is not CV_8UC1
/// @throws std::bad_alloc, cv::Exception when memory is short
int estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred, cv::Mat& kernel,
              const KernelSolveSettings& settings, CProgressSpan* progress);

/// Cleans a solved kernel, CV_32FC1, as told at `estKernel`, in place.
void cleanKernel(cv::Mat& kernel, float floor);

} // namespace vel
