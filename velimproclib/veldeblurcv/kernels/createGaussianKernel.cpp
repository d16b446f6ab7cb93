#include "velimproclib/veldeblurcv/kernels/createGaussianKernel.h"

#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/veldeblurcv/kernels/normaliseKernel.h"
#include "velimproclib/veldeblurcv/kernels/zeroKernel.h"

#include <cmath>

namespace vel {

std::int64_t gaussianKernelSize(float sigma) noexcept {
    return 2 * std::int64_t{truncateToInt(3.0 * sigma + 0.5)} + 1;
}

cv::Mat createGaussianKernel(std::int64_t size, float sigma) {
    cv::Mat kernel = zeroKernel(size, size);
    const double centre = static_cast<double>(size - 1) * 0.5;
    const double deviation = sigma;
    const double denominator = (deviation + deviation) * deviation;
    float sum = 0.0f;
    for (int row = 0; row < kernel.rows; ++row) {
        const double dy = toFloat(row - centre);
        float* const elements = kernel.ptr<float>(row);
        for (int column = 0; column < kernel.cols; ++column) {
            const double dx = toFloat(column - centre);
            const float exponent = toFloat(-(dx * dx + dy * dy) / denominator);
            elements[column] = toFloat(std::exp(double{exponent}));
            sum += elements[column];
        }
    }
    normaliseKernel(kernel, sum);
    return kernel;
}

} // namespace vel
