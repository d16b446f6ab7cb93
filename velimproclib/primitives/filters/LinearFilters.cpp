#include "velimproclib/primitives/filters/LinearFilters.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/filters/neighbourhoods.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/filters/LinearFilters.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/arithmetic/floatRows-inl.h"

#ifndef VELORN_PRIMITIVES_LINEAR_FILTERS_COMMON
#define VELORN_PRIMITIVES_LINEAR_FILTERS_COMMON

namespace vel {
namespace {

// Rows and columns differ only in the bytes between the pixels of neighbouring taps.
struct Window {
    std::int64_t tapStep;
    std::int32_t len;
    std::int32_t anchor;
};

template <class T>
const T* firstTap(const T* src, const Window& window) noexcept {
    return bytesAway(src,
                     -(static_cast<std::int64_t>(window.len) - 1 - window.anchor) * window.tapStep);
}

} // namespace
} // namespace vel

#endif

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// The window of a row's first pixel and the taps. `first` is the window's first pixel; the taps are
// used from the last to the first.
struct RowFilter {
    const Unaligned<float>* first;
    std::int64_t tapStep;
    const float* lastTap;
    std::int32_t len;
};

// The product of two floats is exact in double. Therefore each pixel is rounded once for every tap,
// in the order of the taps, for any number of pixels side by side.
float convolvePixel(const RowFilter& filter, std::size_t x) {
    const auto* pixel = filter.first + x;
    double sum = 0;
    for (std::int32_t k = 0; k < filter.len; ++k) {
        sum += static_cast<double>(filter.lastTap[-k]) * static_cast<double>(pixel->value);
        pixel = bytesAway(pixel, filter.tapStep);
    }
    return static_cast<float>(sum);
}

using Wide = hn::ScalableTag<double>;

// Four vectors of pixels.
void convolveBlock(const RowFilter& filter, std::size_t x, Unaligned<float>* dst) {
    const Wide wide;
    const hn::Rebind<float, Wide> narrow;
    const std::size_t lanes = hn::Lanes(wide);
    auto sum0 = hn::Zero(wide);
    auto sum1 = hn::Zero(wide);
    auto sum2 = hn::Zero(wide);
    auto sum3 = hn::Zero(wide);
    const auto* pixels = filter.first + x;
    for (std::int32_t k = 0; k < filter.len; ++k) {
        const auto tap = hn::Set(wide, static_cast<double>(filter.lastTap[-k]));
        const auto pixel = [&](std::size_t i) {
            return hn::PromoteTo(wide, loadUnaligned(narrow, pixels + i * lanes));
        };
        sum0 = hn::Add(sum0, hn::Mul(tap, pixel(0)));
        sum1 = hn::Add(sum1, hn::Mul(tap, pixel(1)));
        sum2 = hn::Add(sum2, hn::Mul(tap, pixel(2)));
        sum3 = hn::Add(sum3, hn::Mul(tap, pixel(3)));
        pixels = bytesAway(pixels, filter.tapStep);
    }
    storeUnaligned(roundedToFloats(narrow, sum0), narrow, dst + x);
    storeUnaligned(roundedToFloats(narrow, sum1), narrow, dst + x + lanes);
    storeUnaligned(roundedToFloats(narrow, sum2), narrow, dst + x + 2 * lanes);
    storeUnaligned(roundedToFloats(narrow, sum3), narrow, dst + x + 3 * lanes);
}

// The last block ends with the row and computes some pixels a second time.
void convolveRowF32(const RowFilter& filter, Unaligned<float>* dst, std::size_t w) {
    const std::size_t block = 4 * hn::Lanes(Wide());
    if (w < block) {
        for (std::size_t x = 0; x < w; ++x) {
            dst[x].value = convolvePixel(filter, x);
        }
        return;
    }
    for (std::size_t x = 0; x < w; x += block) {
        convolveBlock(filter, std::min(x, w - block), dst);
    }
}

// Halves round up for every sign. The quotient is a multiple of 1 / divisor; the additional quarter
// of that unit cannot move it past the next integer and exceeds the error of the inverse by far.
inline std::uint8_t roundedQuotient(std::int32_t sum, std::int32_t /*divisor*/, double inverse) {
    const double quotient = sum * inverse + (0.5 + 0.25 * (inverse < 0 ? -inverse : inverse));
    const double low = quotient > 0.0 ? quotient : 0.0;
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(low < 255.0 ? low : 255.0));
}

// For kernels whose sums may exceed 32 bits, and then also the 53 bits of a double.
inline std::uint8_t roundedQuotient(std::int64_t sum, std::int32_t divisor, double /*inverse*/) {
    const std::int64_t magnitude = std::abs(static_cast<std::int64_t>(divisor));
    const std::int64_t numerator = 2 * (divisor < 0 ? -sum : sum) + magnitude;
    const std::int64_t quotient = numerator < 0 ? 0 : numerator / (2 * magnitude);
    return static_cast<std::uint8_t>(std::min<std::int64_t>(quotient, 255));
}

template <class Sum>
void convolveRowU8(const std::uint8_t* first, std::int64_t tapStep, std::uint8_t* HWY_RESTRICT dst,
                   std::size_t w, const std::int32_t* lastTap, std::int32_t len,
                   std::int32_t divisor) {
    constexpr std::size_t kBlock = 256;
    HWY_ALIGN Sum sums[kBlock];
    const double inverse = 1.0 / divisor;
    for (std::size_t x = 0; x < w; x += kBlock) {
        const std::size_t count = std::min(kBlock, w - x);
        std::fill_n(sums, count, Sum{0});
        const std::uint8_t* pixels = first + x;
        for (std::int32_t k = 0; k < len; ++k) {
            const Sum tap = lastTap[-k];
            for (std::size_t i = 0; i < count; ++i) {
                sums[i] += tap * pixels[i];
            }
            pixels = bytesAway(pixels, tapStep);
        }
        for (std::size_t i = 0; i < count; ++i) {
            dst[x + i] = roundedQuotient(sums[i], divisor, inverse);
        }
    }
}

} // namespace

void convolveF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                 std::int32_t w, std::int32_t h, const float* kernel, Window window) {
    const auto* first = firstTap(unaligned(src), window);
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        const RowFilter filter{rowAt(first, srcStep, y), window.tapStep, kernel + window.len - 1,
                               window.len};
        convolveRowF32(filter, rowAt(unaligned(dst), dstStep, y), static_cast<std::size_t>(w));
    }
}

void convolveU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                std::int32_t dstStep, std::int32_t w, std::int32_t h, const std::int32_t* kernel,
                Window window, std::int32_t divisor) {
    double magnitudes = 0;
    for (std::int32_t k = 0; k < window.len; ++k) {
        magnitudes += std::abs(static_cast<double>(kernel[k]));
    }
    const bool sumsFit32Bits = magnitudes * 255 <= std::numeric_limits<std::int32_t>::max();
    const auto convolveRow =
        sumsFit32Bits ? convolveRowU8<std::int32_t> : convolveRowU8<std::int64_t>;
    const std::uint8_t* first = firstTap(src, window);
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        convolveRow(rowAt(first, srcStep, y), window.tapStep, rowAt(dst, dstStep, y),
                    static_cast<std::size_t>(w), kernel + window.len - 1, window.len, divisor);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(convolveF32);
HWY_EXPORT(convolveU8);

enum class Direction { kRow, kColumn };

template <class T>
Window windowAlong(Direction direction, std::int32_t srcStep, std::int32_t len,
                   std::int32_t anchor) noexcept {
    return {direction == Direction::kRow ? static_cast<std::int64_t>(sizeof(T)) : srcStep, len,
            anchor};
}

template <class T, class Tap>
Status checkFilter(Direction direction, const T* src, std::int32_t srcStep, const T* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, const Tap* kernel,
                   std::int32_t len) noexcept {
    if (const Status status = checkArguments({src, dst, kernel}, {w, h, len}, {srcStep, dstStep})) {
        return status;
    }
    return direction == Direction::kRow
               ? checkBorderStep(srcStep, w, static_cast<std::int64_t>(len) - 1, sizeof(T))
               : checkRowStep(srcStep, w, sizeof(T));
}

Status filterF32(Direction direction, const float* src, std::int32_t srcStep, float* dst,
                 std::int32_t dstStep, std::int32_t w, std::int32_t h, const float* kernel,
                 std::int32_t len, std::int32_t anchor) noexcept {
    if (const Status status =
            checkFilter(direction, src, srcStep, dst, dstStep, w, h, kernel, len)) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(convolveF32)
    (src, srcStep, dst, dstStep, w, h, kernel, windowAlong<float>(direction, srcStep, len, anchor));
    return kOk;
}

Status filterU8(Direction direction, const std::uint8_t* src, std::int32_t srcStep,
                std::uint8_t* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h,
                const std::int32_t* kernel, std::int32_t len, std::int32_t anchor,
                std::int32_t divisor) noexcept {
    if (const Status status =
            checkFilter(direction, src, srcStep, dst, dstStep, w, h, kernel, len)) {
        return status;
    }
    if (divisor == 0) {
        return kDivisorZero;
    }
    HWY_DYNAMIC_DISPATCH(convolveU8)
    (src, srcStep, dst, dstStep, w, h, kernel,
     windowAlong<std::uint8_t>(direction, srcStep, len, anchor), divisor);
    return kOk;
}

} // namespace

Status filterRowF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                    std::int32_t anchor) noexcept {
    return filterF32(Direction::kRow, src, srcStep, dst, dstStep, w, h, kernel, len, anchor);
}

Status filterColumnF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                       std::int32_t w, std::int32_t h, const float* kernel, std::int32_t len,
                       std::int32_t anchor) noexcept {
    return filterF32(Direction::kColumn, src, srcStep, dst, dstStep, w, h, kernel, len, anchor);
}

Status filterRowU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, const std::int32_t* kernel,
                   std::int32_t len, std::int32_t anchor, std::int32_t divisor) noexcept {
    return filterU8(Direction::kRow, src, srcStep, dst, dstStep, w, h, kernel, len, anchor,
                    divisor);
}

Status filterColumnU8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h,
                      const std::int32_t* kernel, std::int32_t len, std::int32_t anchor,
                      std::int32_t divisor) noexcept {
    return filterU8(Direction::kColumn, src, srcStep, dst, dstStep, w, h, kernel, len, anchor,
                    divisor);
}

} // namespace vel
#endif
