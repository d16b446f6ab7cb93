#include "velimproclib/veldeblurcv/detail/HalfTiles.h"

#include "velimproclib/tiles/blend.h"

namespace vel {

std::int32_t splitTileHalves(const cv::Mat& plane, cv::Mat& top, cv::Mat& bottom,
                             std::int32_t extra) {
    const std::int32_t length = plane.rows / 2 + extra;
    top = plane.rowRange(0, length);
    bottom = plane.rowRange(plane.rows - length, plane.rows);
    return length;
}

void TBMerge(const cv::Mat& top, const cv::Mat& bottom, cv::Mat& plane) {
    const int start = plane.rows - bottom.rows;
    const int overlap = top.rows - start;
    const int third = overlap / 3;
    const int first = start + third;
    const int last = top.rows - third;
    if (third < 1 || first + 2 >= last) {
        throw "TBMerge: not enough overlap";
    }
    bottom.copyTo(plane.rowRange(start, plane.rows));
    top.rowRange(0, first + 1).copyTo(plane.rowRange(0, first + 1));
    const float delta = 1.0f / static_cast<float>(last - first);
    float weight = delta;
    for (int r = first; r < last; ++r) {
        const float* upper = top.ptr<float>(r);
        const float* lower = bottom.ptr<float>(r - start);
        float* merged = plane.ptr<float>(r);
        for (int x = 0; x < plane.cols; ++x) {
            merged[x] = blend(static_cast<double>(upper[x]), static_cast<double>(lower[x]), weight);
        }
        weight += delta;
    }
}

} // namespace vel
