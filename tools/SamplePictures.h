#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <string>
#include <vector>

namespace velorn::tools {

/// A sharp picture (CV_32FC3, 0..255) with the name that tables call it by.
struct NamedPicture {
    std::string name;
    cv::Mat colours;
};

/// The pictures of `files`, each named by its file, or by `name=file` where one is given.
/// @throws Failure when one cannot be read.
std::vector<NamedPicture> picturesFrom(std::span<const std::string> files);

/// Three parts of the drawn scene, `width` by `height` pixels each, at most 624 by 524: a house of
/// bricks, a shop with its street, and a garden.
std::vector<NamedPicture> drawnViews(int width, int height);

/// What a camera makes of a picture, and what it should have seen: both of one size.
struct Photograph {
    cv::Mat sharp;
    RgbPixels taken;

    /// Peak signal to noise ratio of `taken`, in decibels.
    double decibels() const;
    /// Peak signal to noise ratio of `restored`, of the same size and 8 bits, in decibels.
    double decibelsOf(const RgbPixels& restored) const;
    /// The most that `decibelsOf` comes to when `restored` is moved by up to `kReach` whole pixels
    /// each way, a rim of as many pixels left out. Nothing tells a blind restoration where the
    /// picture would lie without the blur.
    double decibelsWhenMoved(const RgbPixels& restored) const;
    static constexpr int kReach = 4;
};

/// `picture` blurred by `kernel`, with noise of standard deviation `noise` in every sample, at 8
/// bits. The rim of half a kernel gives only what a blur carries in from beyond the frame.
Photograph photographOf(const cv::Mat& picture, const BlurKernel& kernel, double noise,
                        std::uint32_t seed);

} // namespace velorn::tools
