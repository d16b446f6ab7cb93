#include "velimproclib/tiles/imageExtendBorder.h"

#include <algorithm>
#include <cstring>

namespace vel {

namespace {

void extendRow(float* row, int columns, int left, int right) {
    std::fill_n(row, left, row[left]);
    std::fill_n(row + columns - right, right, row[columns - right - 1]);
}

} // namespace

void imageExtendBorder(cv::Mat& plane, std::int32_t left, std::int32_t top, std::int32_t right,
                       std::int32_t bottom) {
    const int firstBelow = plane.rows - bottom;
    for (int y = top; y < firstBelow; ++y) {
        extendRow(plane.ptr<float>(y), plane.cols, left, right);
    }
    const std::size_t rowBytes = static_cast<std::size_t>(plane.cols) * sizeof(float);
    for (int y = 0; y < top; ++y) {
        std::memcpy(plane.ptr(y), plane.ptr(top), rowBytes);
    }
    for (int y = firstBelow; y < plane.rows; ++y) {
        std::memcpy(plane.ptr(y), plane.ptr(firstBelow - 1), rowBytes);
    }
}

} // namespace vel
