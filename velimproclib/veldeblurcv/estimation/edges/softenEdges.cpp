#include "velimproclib/veldeblurcv/estimation/edges/softenEdges.h"

#include "velimproclib/images/InnerRegion.h"
#include "velimproclib/primitives/filters/LinearFilters.h"
#include "velimproclib/veldeblurcv/kernels/gaussian1D.h"

#include <array>
#include <cstdint>

namespace vel {

void softenEdges(cv::Mat& edge, cv::Mat& scratch, float sigma) {
    constexpr int kTaps = 5;
    constexpr int kRing = 2;
    std::array<std::int32_t, kTaps> taps;
    std::int32_t divisor = 0;
    gaussian1D(taps.data(), &divisor, kTaps, sigma);
    const InnerRegion<std::uint8_t> pixels(edge, kRing, kRing);
    const InnerRegion<std::uint8_t> between(scratch, kRing, kRing);
    filterRowU8(pixels.data, pixels.step, between.data, between.step, pixels.w, pixels.h,
                taps.data(), kTaps, kRing, divisor);
    filterColumnU8(between.data, between.step, pixels.data, pixels.step, pixels.w, pixels.h,
                   taps.data(), kTaps, kRing, divisor);
}

} // namespace vel
