#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <cstdint>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velorn::tools {

/// A blur that differs from place to place.
struct LocalBlur {
    std::string family;
    std::string name;
    /// Blurs a picture (CV_32FC3). The result has the same size; its outer `reach` pixels depend on
    /// what lies beyond the picture.
    std::function<cv::Mat(const cv::Mat& picture)> blurred;
    /// The kernel at a place, in shares of the picture's width and height.
    std::function<BlurKernel(double x, double y)> kernelAt;
    int reach = 0;
};

/// What the camera does while the shutter is open, in pixels.
struct Shake {
    double shift = 0.0; ///< of the middle of the picture, by turning up and down and to the sides
    double roll = 0.0;  ///< of the corners, by turning about the line of sight
};

/// The blur of a camera that turns about its three axes (O. Whyte, J. Sivic, A. Zisserman,
/// J. Ponce, Non-uniform deblurring for shaken images, IJCV 2012): the mean of projective warps
/// along a smooth random path. The mean of the path is the sharp picture's place. The focal length
/// is the longer side of the picture. The same arguments give the same kernels on every system.
/// @param size  of the pictures to blur
LocalBlur rotation(const Shake& shake, std::uint32_t seed, cv::Size size);

/// A subject in the middle, an ellipse half as wide and high as the picture, and what surrounds it,
/// each with a blur of its own.
LocalBlur subject(const std::string& name, const BlurKernel& inside, const BlurKernel& outside);

/// The local blurs of a half of the study, 0 or 1, for pictures of `size`.
std::vector<LocalBlur> localBlurs(int half, cv::Size size);

} // namespace velorn::tools
