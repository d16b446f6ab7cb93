#include "velimproclib/veldeblurcv/estimation/edges/estEdge.h"

#include "velimproclib/images/morphInside.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/veldeblurcv/estimation/edges/bilateralFilter.h"

#include <cstdint>

namespace vel {

namespace {

/// Sets each pixel to the nearer extreme, in a tie to the higher one.
void moveToNearerExtreme(const cv::Mat& high, const cv::Mat& low, cv::Mat& image) {
    forEachRow(image.rows, [&](int y) {
        const std::uint8_t* const highs = high.ptr<std::uint8_t>(y);
        const std::uint8_t* const lows = low.ptr<std::uint8_t>(y);
        std::uint8_t* const pixels = image.ptr<std::uint8_t>(y);
        for (int x = 0; x < image.cols; ++x) {
            const int toHigh = highs[x] - pixels[x];
            const int toLow = pixels[x] - lows[x];
            pixels[x] = toHigh > toLow ? lows[x] : highs[x];
        }
    });
}

} // namespace

void estEdge(const cv::Mat& src, cv::Mat& dst, int d, float sigmaColor, float sigmaSpace,
             int shockIters) {
    if (d > 0) {
        bilateralFilter(src, dst, d, sigmaColor, sigmaSpace);
    } else {
        src.copyTo(dst);
    }
    if (shockIters <= 0) {
        return;
    }
    cv::Mat high = dst.clone();
    cv::Mat low = dst.clone();
    runSideBySide([&] { morphInside(high, shockIters, dilate3x3InPlaceU8); },
                  [&] { morphInside(low, shockIters, erode3x3InPlaceU8); });
    moveToNearerExtreme(high, low, dst);
}

} // namespace vel
