#include "velimproclib/veldeblurcv/kernels/zeroKernel.h"

#include <limits>
#include <new>

namespace vel {

cv::Mat zeroKernel(std::int64_t rows, std::int64_t columns) {
    constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
    if (rows < 1 || columns < 1 || rows > kLongest || columns > kLongest) {
        throw std::bad_alloc();
    }
    cv::Mat kernel(static_cast<int>(rows), static_cast<int>(columns), CV_32FC1);
    kernel.setTo(0.0);
    return kernel;
}

} // namespace vel
