#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velorn {

/// A blur kernel: rows of weights, odd sides, sum 1.
struct BlurKernel {
    int width = 0;
    int height = 0;
    std::vector<float> weights;

    int largerSide() const { return width > height ? width : height; }
    float at(int row, int column) const {
        return weights[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(column)];
    }
};

/// The blurs that two numbers describe.
struct AnalyticBlur {
    enum class Shape { Gaussian = 0, Disc = 1, Motion = 2 };

    Shape shape = Shape::Gaussian;
    /// Standard deviation, radius or length, in pixels.
    float extent = 0.0f;
    /// Motion only: degrees, rising to the right.
    float angle = 0.0f;
};

/// The largest kernel side that is made or read at all; pictures set narrower bounds.
inline constexpr int kLargestKernelSide = 1023;

/// The kernel of `blur`. @throws Failure when the extent is not a positive number or gives a kernel
/// with a side above `kLargestKernelSide`.
BlurKernel makeKernel(const AnalyticBlur& blur);

/// The kernel of one element: no blur.
BlurKernel pointKernel();

/// `kernel`, given for the picture as displayed, for the rows and columns as a file with the given
/// EXIF orientation (1..8) stores them.
BlurKernel asStored(const BlurKernel& kernel, int orientation);

/// The reverse of `asStored`: `kernel`, found in the rows and columns as stored, for the picture as
/// displayed.
BlurKernel asShown(const BlurKernel& kernel, int orientation);

/// Checks and normalises what was read from a file: odd sides, finite weights, a positive sum.
/// A sum that is 1 but for rounding is left alone, so that kernels written by us come back exactly.
/// @throws Failure whose text begins with `origin`.
BlurKernel checkedKernel(BlurKernel kernel, const std::string& origin);

} // namespace velorn
