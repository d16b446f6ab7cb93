#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <string>
#include <vector>

namespace velorn::tools {

/// A sharp picture (CV_32FC3, 0..255) and its name in tables.
struct NamedPicture {
    std::string name;
    cv::Mat colours;
};

/// Reads `files`. An entry is `name=file`, or a file, whose stem is then the name.
/// @throws Failure when a file cannot be read.
std::vector<NamedPicture> picturesFrom(std::span<const std::string> files);

/// Three parts of the drawn scene, `width` by `height` pixels each, at most 624 by 524: a house of
/// bricks, a shop with its street, and a garden.
std::vector<NamedPicture> drawnViews(int width, int height);

/// A simulated photograph and the sharp picture that it shows, of equal size.
struct Photograph {
    cv::Mat sharp;
    RgbPixels taken;

    /// Peak signal-to-noise ratio of `taken`, in decibels.
    double decibels() const;
    /// Peak signal-to-noise ratio of `restored`, of the same size and 8 bits, in decibels.
    double decibelsOf(const RgbPixels& restored) const;
    /// The largest `decibelsOf` when `restored` is moved by up to `kReach` whole pixels in each
    /// direction, without a margin of `kReach` pixels. A blurred picture does not determine the
    /// position of the sharp one, so a blind restoration may be displaced.
    double decibelsWhenMoved(const RgbPixels& restored) const;
    static constexpr int kReach = 4;
};

/// `picture` blurred by `kernel`, with noise of standard deviation `noise` in every sample, rounded
/// to 8 bits. The outer half kernel of `picture` lies outside the frame of the result and only
/// contributes to its borders.
Photograph photographOf(const cv::Mat& picture, const BlurKernel& kernel, double noise,
                        std::uint32_t seed);

} // namespace velorn::tools
