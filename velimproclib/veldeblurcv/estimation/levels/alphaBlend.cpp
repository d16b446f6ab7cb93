#include "velimproclib/veldeblurcv/estimation/levels/alphaBlend.h"

#include "velimproclib/primitives/base/Team.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/estimation/levels/alphaBlend.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

inline double blended(float src, float dst, float alpha) {
    const float share = src * alpha;
    return static_cast<double>(share) +
           static_cast<double>(dst) * (1.0 - static_cast<double>(alpha));
}

} // namespace

void blendRowF32(const float* src, float* dst, std::size_t w, float alpha) {
    for (std::size_t x = 0; x < w; ++x) {
        dst[x] = static_cast<float>(blended(src[x], dst[x], alpha));
    }
}

void blendRowU8(const std::uint8_t* src, std::uint8_t* dst, std::size_t w, float alpha) {
    for (std::size_t x = 0; x < w; ++x) {
        const double value = blended(src[x], dst[x], alpha);
        // Only NaN fails the comparison: it must not reach the conversion.
        const double number = value > 0.0 ? value : 0.0;
        dst[x] = static_cast<std::uint8_t>(static_cast<std::int32_t>(number));
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(blendRowF32);
HWY_EXPORT(blendRowU8);

template <class T>
std::size_t elementsInRow(const cv::Mat& plane) {
    return static_cast<std::size_t>(plane.cols) * plane.elemSize() / sizeof(T);
}

template <class T, class BlendRow>
void blendRows(const cv::Mat& src, cv::Mat& dst, BlendRow&& blendRow) {
    const std::size_t w = std::min(
        {static_cast<std::size_t>(src.cols), elementsInRow<T>(src), elementsInRow<T>(dst)});
    const int h = std::min(src.rows, dst.rows);
    forEachRow(h, [&](int y) { blendRow(src.ptr<T>(y), dst.ptr<T>(y), w); });
}

} // namespace

void alphaBlend(const cv::Mat& src, cv::Mat& dst, float alpha) {
    const float share = std::clamp(alpha, 0.0f, 1.0f); // leaves NaN as it is
    if (src.type() == CV_8UC1 || dst.type() == CV_8UC1) {
        blendRows<std::uint8_t>(src, dst, [&](const auto* from, auto* to, std::size_t w) {
            HWY_DYNAMIC_DISPATCH(blendRowU8)(from, to, w, share);
        });
    } else if (src.type() == CV_32FC1 || dst.type() == CV_32FC1) {
        blendRows<float>(src, dst, [&](const auto* from, auto* to, std::size_t w) {
            HWY_DYNAMIC_DISPATCH(blendRowF32)(from, to, w, share);
        });
    } else {
        throw "alphaBlend - image type not supported";
    }
}

} // namespace vel
#endif
