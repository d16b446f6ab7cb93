#pragma once

#include <cstddef>
#include <cstring>
#include <opencv2/core.hpp>

namespace vel::test {

/// True if two matrices have the same size, type and bits.
inline bool sameBits(const cv::Mat& a, const cv::Mat& b) {
    if (a.size() != b.size() || a.type() != b.type()) {
        return false;
    }
    const std::size_t rowBytes = static_cast<std::size_t>(a.cols) * a.elemSize();
    for (int y = 0; y < a.rows; ++y) {
        if (std::memcmp(a.ptr(y), b.ptr(y), rowBytes) != 0) {
            return false;
        }
    }
    return true;
}

} // namespace vel::test
