#include "restoration/kernels/analyticKernel.h"

#include "restoration/kernels/checkKernelSides.h"
#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"
#include "velimproclib/veldeblurcv/kernels/createGaussianKernel.h"
#include "velimproclib/veldeblurcv/kernels/createMotionKernel.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

/// A lower bound of the larger side, which bounds the memory that the core allocates.
double leastSide(VelornBlur blur, float extent) {
    const double pixels = extent;
    switch (blur) {
    case VELORN_BLUR_GAUSSIAN:
        return 6.0 * pixels - 2.0;
    case VELORN_BLUR_DISC:
        return 2.0 * pixels - 2.0;
    case VELORN_BLUR_MOTION:
        break;
    }
    return pixels / std::sqrt(2.0) - 2.0; // of a diagonal motion
}

cv::Mat coreKernel(VelornBlur blur, float extent, float angle) {
    switch (blur) {
    case VELORN_BLUR_GAUSSIAN:
        return vel::createGaussianKernel(vel::gaussianKernelSize(extent), extent);
    case VELORN_BLUR_DISC:
        return vel::createDiscKernel(extent);
    case VELORN_BLUR_MOTION:
        break;
    }
    return vel::createMotionKernel(extent, angle);
}

} // namespace

Kernel analyticKernel(VelornBlur blur, float extent, float angle) {
    if (leastSide(blur, extent) > double{VELORN_LARGEST_KERNEL_SIDE}) {
        throwKernelTooLarge();
    }
    const cv::Mat matrix = coreKernel(blur, extent, angle);
    checkKernelSides(matrix.cols, matrix.rows);
    Kernel kernel{matrix.cols, matrix.rows, {}};
    if (matrix.total() == 1) {
        kernel.values = {1.0f}; // the area of a tiny disc rounds to 0, which has no quotient
        return kernel;
    }
    kernel.values.reserve(matrix.total());
    for (int row = 0; row < matrix.rows; ++row) {
        const float* const values = matrix.ptr<float>(row);
        kernel.values.insert(kernel.values.end(), values, values + matrix.cols);
    }
    return kernel;
}

} // namespace restoration
