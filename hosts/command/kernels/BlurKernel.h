#pragma once

#include "hosts/command/kernels/KernelSize.h"
#include "velorn.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace velorn {

/// A blur kernel: weights row after row, odd sides, sum 1.
struct BlurKernel {
    int width = 0;
    int height = 0;
    std::vector<float> weights;

    KernelSize size() const { return {width, height}; }
    int largerSide() const { return size().largerSide(); }
    float at(int row, int column) const {
        return weights[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(column)];
    }
};

/// A blur that one or two numbers describe.
struct AnalyticBlur {
    enum class Shape {
        Gaussian = VELORN_BLUR_GAUSSIAN,
        Disc = VELORN_BLUR_DISC,
        Motion = VELORN_BLUR_MOTION
    };

    Shape shape = Shape::Gaussian;
    /// Standard deviation, radius or length, in pixels.
    float extent = 0.0f;
    /// Motion only: degrees, counter-clockwise from the horizontal.
    float angle = 0.0f;
};

/// The largest kernel side; pictures set lower limits.
inline constexpr int kLargestKernelSide = VELORN_LARGEST_KERNEL_SIDE;

/// The kernel of `blur`.
/// @throws Failure when the extent is not positive, the angle is not finite, or the kernel would
///         have a side above `kLargestKernelSide`.
BlurKernel makeKernel(const AnalyticBlur& blur);

/// `kernel`, which `checkedKernel` accepts, for the restoration library.
api::Kernel libraryKernel(const BlurKernel& kernel);

/// The values of a kernel of the restoration library.
BlurKernel blurKernelOf(const api::Kernel& kernel);

/// `kernel`, which refers to the picture as displayed, for the rows and columns as a file with the
/// given EXIF orientation (1..8) stores them.
BlurKernel asStored(const BlurKernel& kernel, int orientation);

/// The inverse of `asStored`: `kernel`, which refers to the rows and columns as stored, for the
/// picture as displayed.
BlurKernel asShown(const BlurKernel& kernel, int orientation);

/// Checks a kernel from a file or an estimate and scales its sum to 1. A sum that differs from 1 by
/// rounding only stays, so that kernels written by this program read back exactly.
/// @throws Failure for even sides, weights that are not finite, and a sum that is not positive. The
///         text begins with `origin`.
BlurKernel checkedKernel(BlurKernel kernel, const std::string& origin);

} // namespace velorn
