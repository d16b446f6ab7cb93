#include "hosts/command/kernels/BlurKernel.h"

#include "hosts/command/library/statusText.h"
#include "hosts/command/pictures/Orientation.h"
#include "hosts/command/terminal/Failure.h"
#include "velorncore10.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velorn {
namespace {

/// The side of the kernel that the library makes, or an upper bound of it: the library writes into
/// memory of the caller and returns the size afterwards.
double largestSideOf(const AnalyticBlur& blur) {
    const double extent = static_cast<double>(blur.extent);
    switch (blur.shape) {
    case AnalyticBlur::Shape::Gaussian:
        return 2.0 * std::trunc(3.0 * extent + 0.5) + 1.0;
    case AnalyticBlur::Shape::Disc:
        return 2.0 * std::trunc(extent + 0.5) + 1.0;
    case AnalyticBlur::Shape::Motion:
        break;
    }
    return 2.0 * std::trunc(std::max(1.0, extent) / 2.0 + 1.0) + 1.0;
}

} // namespace

BlurKernel makeKernel(const AnalyticBlur& blur) {
    if (!(blur.extent > 0.0f) || !std::isfinite(blur.angle)) {
        throw Failure("a blur needs an extent above 0 and a finite angle");
    }
    const double side = largestSideOf(blur);
    if (!(side <= kLargestKernelSide)) {
        throw Failure("a blur of this extent needs a kernel larger than " +
                      KernelSize{kLargestKernelSide, kLargestKernelSide}.text());
    }
    BlurKernel kernel;
    kernel.weights.resize(static_cast<std::size_t>(side * side));
    KernelRecord record{};
    record.data = kernel.weights.data();
    const auto status =
        ornCreateKernel(static_cast<int>(blur.shape), blur.extent, blur.angle, &record);
    if (status != VELORN_OK) {
        throw Failure("the kernel cannot be made: " + statusText(status));
    }
    kernel.width = record.width;
    kernel.height = record.height;
    kernel.weights.resize(static_cast<std::size_t>(record.width) *
                          static_cast<std::size_t>(record.height));
    return checkedKernel(std::move(kernel), "this blur");
}

BlurKernel pointKernel() {
    return {1, 1, {1.0f}};
}

BlurKernel rotatedBy180(const BlurKernel& kernel) {
    BlurKernel rotated = kernel;
    std::ranges::reverse(rotated.weights);
    return rotated;
}

BlurKernel asStored(const BlurKernel& kernel, int orientation) {
    const KernelSize size = asStored(kernel.size(), orientation);
    const Orientation arrangement(orientation);
    BlurKernel stored{size.width, size.height, {}};
    stored.weights.reserve(kernel.weights.size());
    for (int r = 0; r < stored.height; ++r) {
        for (int c = 0; c < stored.width; ++c) {
            const auto place = arrangement.displayed({r, c}, kernel.width, kernel.height);
            stored.weights.push_back(kernel.at(place.row, place.column));
        }
    }
    return stored;
}

BlurKernel asShown(const BlurKernel& kernel, int orientation) {
    // Orientations 6 and 8 are quarter turns and inverse to each other; all others are inverse to
    // themselves.
    const int inverse = orientation == 6 ? 8 : orientation == 8 ? 6 : orientation;
    return asStored(kernel, inverse);
}

BlurKernel checkedKernel(BlurKernel kernel, const std::string& origin) {
    if (kernel.width % 2 == 0 || kernel.height % 2 == 0) {
        throw Failure(origin + ": the kernel is " + kernel.size().text() +
                      ", but both sides must be odd");
    }
    if (!std::ranges::all_of(kernel.weights, [](float w) { return std::isfinite(w); })) {
        throw Failure(origin + ": the kernel has weights that are not finite");
    }
    const double sum = std::accumulate(kernel.weights.begin(), kernel.weights.end(), 0.0);
    if (!(sum > 1e-12)) {
        throw Failure(origin + ": the sum of the kernel's weights is not positive");
    }
    constexpr double kRounding = 1e-5;
    if (std::abs(sum - 1.0) > kRounding) {
        for (float& weight : kernel.weights) {
            weight = static_cast<float>(static_cast<double>(weight) / sum);
        }
    }
    return kernel;
}

} // namespace velorn
