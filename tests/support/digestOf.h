#pragma once

#include "tests/support/Digest.h"

#include <cstddef>
#include <initializer_list>
#include <opencv2/core.hpp>
#include <span>
#include <string>

namespace vel::test {

/// Digest of the pixels of all matrices, row by row.
inline std::string digestOf(std::initializer_list<cv::Mat> matrices) {
    Digest digest;
    for (const cv::Mat& matrix : matrices) {
        const std::size_t rowBytes = static_cast<std::size_t>(matrix.cols) * matrix.elemSize();
        for (int y = 0; y < matrix.rows; ++y) {
            digest.add(std::span<const unsigned char>(matrix.ptr(y), rowBytes));
        }
    }
    return digest.text();
}

inline std::string digestOf(const cv::Mat& matrix) {
    return digestOf({matrix});
}

} // namespace vel::test
