#include "velimproclib/veldeblurcv/estimation/edges/EdgeMask.h"

#include "velimproclib/images/InnerRegion.h"
#include "velimproclib/primitives/arithmetic/AbsoluteDifference.h"
#include "velimproclib/primitives/arithmetic/Histogram.h"
#include "velimproclib/primitives/base/Status.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/filters/MeanFilter.h"
#include "velimproclib/primitives/filters/Medians.h"

#include <algorithm>
#include <cstddef>

namespace vel {

namespace {

constexpr int kHistogramEntries = 260;
constexpr int kHistogramLevels = 257;
constexpr int kLeastThreshold = 4;
constexpr int kLeastBand = 8;
constexpr int kSmallKernelSide = 3;

using PixelFilter = decltype(medianHorizU8);

/// Runs a neighbourhood filter on all pixels of `src` that are at least `ring` pixels away from the
/// border. An image without such a pixel stays as it is.
void filterInsideRing(PixelFilter* filter, int mask, int ring, const cv::Mat& src, cv::Mat& dst) {
    const InnerRegion<std::uint8_t> from(src, ring, ring);
    const InnerRegion<std::uint8_t> to(dst, ring, ring);
    filter(from.data, from.step, to.data, to.step, from.w, from.h, mask);
}

/// Medians along the rows, then along the columns.
void smoothByMedians(cv::Mat& image, cv::Mat& scratch, int side) {
    if (side <= kSmallKernelSide) {
        filterInsideRing(medianHorizU8, kMask31, 1, image, scratch);
        filterInsideRing(medianVertU8, kMask13, 1, scratch, image);
    } else {
        filterInsideRing(medianHorizU8, kMask51, 2, image, scratch);
        filterInsideRing(medianVertU8, kMask15, 2, scratch, image);
    }
}

/// The distance of each pixel from the mean of its neighbourhood.
void computeResponses(const cv::Mat& image, cv::Mat& responses) {
    cv::Mat means = cv::Mat::zeros(image.size(), CV_8UC1);
    filterInsideRing(meanFilterU8, kMask33, 1, image, means);
    const InnerRegion<std::uint8_t> values(image, 1, 1);
    const InnerRegion<std::uint8_t> localMeans(means, 1, 1);
    const InnerRegion<std::uint8_t> distances(responses, 1, 1);
    absDiffU8(values.data, values.step, localMeans.data, localMeans.step, distances.data,
              distances.step, values.w, values.h);
}

void clearBelow(int threshold, cv::Mat& mask) {
    forEachRow(mask.rows, [&](int y) {
        std::uint8_t* const pixels = mask.ptr<std::uint8_t>(y);
        std::replace_if(
            pixels, pixels + mask.cols, [=](int pixel) { return pixel < threshold; },
            std::uint8_t{0});
    });
}

void clearBand(int band, cv::Mat& mask) {
    const int rows = std::min(band, mask.rows);
    const int columns = std::min(band, mask.cols);
    mask.rowRange(0, rows).setTo(0);
    mask.rowRange(mask.rows - rows, mask.rows).setTo(0);
    mask.colRange(0, columns).setTo(0);
    mask.colRange(mask.cols - columns, mask.cols).setTo(0);
}

} // namespace

EdgeMask::EdgeMask() : m_hist(allocate()), m_histLevels(allocate()) {}

EdgeMask::Buffer EdgeMask::allocate() {
    Buffer buffer(reinterpret_cast<std::int32_t*>(alignedAllocF32(kHistogramEntries)));
    if (!buffer) {
        throw "CBlurEst::CBlurEst - ippsMalloc_32s failed";
    }
    return buffer;
}

void EdgeMask::compute(const cv::Mat& edge, cv::Mat& mask, int count, int side) {
    cv::Mat smoothed = edge.clone();
    mask.create(edge.size(), CV_8UC1);
    mask.setTo(0);
    smoothByMedians(smoothed, mask, side);
    computeResponses(smoothed, mask);
    countResponses(mask);
    clearBelow(thresholdFor(count), mask);
    // The band also covers the rings that the filters leave out.
    clearBand(std::max(side, kLeastBand), mask);
}

void EdgeMask::countResponses(const cv::Mat& responses) {
    // The histogram of an image without an inner region is empty.
    std::fill_n(m_hist.get(), kHistogramEntries, 0);
    const InnerRegion<std::uint8_t> counted(responses, 2, 2);
    histogramEvenU8(counted.data, counted.step, counted.w, counted.h, m_hist.get(),
                    m_histLevels.get(), kHistogramLevels, 0, 256);
}

int EdgeMask::thresholdFor(int count) const {
    std::int64_t sum = 0;
    for (int bin = 255; bin > kLeastThreshold; --bin) {
        sum += m_hist[static_cast<std::size_t>(bin)];
        if (sum > count) {
            return bin;
        }
    }
    return kLeastThreshold;
}

} // namespace vel
