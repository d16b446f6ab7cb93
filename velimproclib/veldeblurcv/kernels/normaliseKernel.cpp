#include "velimproclib/veldeblurcv/kernels/normaliseKernel.h"

#include "velimproclib/primitives/base/toFloat.h"

#include <algorithm>

namespace vel {

void normaliseKernel(cv::Mat& kernel, float sum) {
    for (int row = 0; row < kernel.rows; ++row) {
        float* const elements = kernel.ptr<float>(row);
        for (int column = 0; column < kernel.cols; ++column) {
            elements[column] /= sum;
        }
    }
}

void normaliseKernel(std::span<const double> elements, float sum, cv::Mat& kernel) {
    std::transform(elements.begin(), elements.end(), kernel.ptr<float>(),
                   [sum](double element) { return toFloat(element / sum); });
}

} // namespace vel
