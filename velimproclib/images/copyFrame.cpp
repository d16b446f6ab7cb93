#include "velimproclib/images/copyFrame.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vel {
namespace {

void copyColumns(const cv::Mat& src, cv::Mat& dst, int y, int begin, int end) {
    const std::size_t pixelBytes = src.elemSize();
    const std::size_t offset = static_cast<std::size_t>(begin) * pixelBytes;
    std::memcpy(dst.ptr(y) + offset, src.ptr(y) + offset,
                static_cast<std::size_t>(end - begin) * pixelBytes);
}

} // namespace

void copyFrame(const cv::Mat& src, cv::Mat& dst, int top, int bottom, int left, int right) {
    const int innerTop = std::clamp(top, 0, src.rows);
    const int innerBottom = std::max(src.rows - std::max(bottom, 0), innerTop);
    const int innerLeft = std::clamp(left, 0, src.cols);
    const int innerRight = std::max(src.cols - std::max(right, 0), innerLeft);
    for (int y = 0; y < src.rows; ++y) {
        if (y < innerTop || y >= innerBottom) {
            copyColumns(src, dst, y, 0, src.cols);
        } else {
            copyColumns(src, dst, y, 0, innerLeft);
            copyColumns(src, dst, y, innerRight, src.cols);
        }
    }
}

} // namespace vel
