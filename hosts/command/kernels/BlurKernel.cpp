#include "hosts/command/kernels/BlurKernel.h"

#include "hosts/command/pictures/Orientation.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velorn {

BlurKernel makeKernel(const AnalyticBlur& blur) {
    try {
        return blurKernelOf(
            api::Kernel::of(static_cast<VelornBlur>(blur.shape), blur.extent, blur.angle));
    } catch (const api::Failure& failure) {
        throw Failure(std::string("the kernel cannot be made: ") + failure.what());
    }
}

api::Kernel libraryKernel(const BlurKernel& kernel) {
    return api::Kernel::fromValues(kernel.weights.data(), kernel.width, kernel.height);
}

BlurKernel blurKernelOf(const api::Kernel& kernel) {
    const std::ptrdiff_t count = std::ptrdiff_t{kernel.width()} * kernel.height();
    return {kernel.width(), kernel.height(), {kernel.values(), kernel.values() + count}};
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
    return asStored(kernel, Orientation::inverse(orientation));
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
