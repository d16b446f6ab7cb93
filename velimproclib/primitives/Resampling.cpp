#include "velimproclib/primitives/Resampling.h"

#include "velimproclib/primitives/argumentChecks.h"
#include "velimproclib/primitives/rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/Resampling.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef VELORN_PRIMITIVES_RESAMPLING_COMMON
#define VELORN_PRIMITIVES_RESAMPLING_COMMON

namespace vel {
namespace {

constexpr int kWeightBits = 14;
constexpr std::int32_t kWeightOne = 1 << kWeightBits;
// Fractional bits that a pixel keeps between the two passes: with its weight it fills 29 bits.
constexpr int kPassBits = 7;

// A position between two neighbouring pixels. At the edges both are the same.
struct Sample {
    std::int32_t first;
    std::int32_t second;
    std::int32_t secondWeight;
};

// One direction of the resampling: `length` source pixels, shown `factor` times as large.
struct Axis {
    std::int32_t length;
    double factor;

    Sample at(std::int32_t i) const noexcept {
        const double position = (i + 0.5) / factor - 0.5;
        if (!(position > 0.0)) {
            return {0, 0, 0};
        }
        if (position >= length - 1) {
            return {length - 1, length - 1, 0};
        }
        const auto first = static_cast<std::int32_t>(position);
        return {first, first + 1,
                static_cast<std::int32_t>(std::lround((position - first) * kWeightOne))};
    }
};

struct Plane {
    const std::uint8_t* src;
    std::int32_t srcStep;
    Axis columns;
    Axis rows;
};

} // namespace
} // namespace vel

#endif

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// Columns are resampled in blocks, so that their positions, computed once for all rows, and the
// two source rows at work have a fixed place on the stack.
constexpr std::int32_t kBlock = 1024;

struct ColumnSamples {
    std::int32_t first[kBlock];
    std::int32_t second[kBlock];
    std::int32_t secondWeight[kBlock];
};

void locateColumns(const Axis& columns, std::int32_t x0, std::int32_t count,
                   ColumnSamples& samples) {
    for (std::int32_t i = 0; i < count; ++i) {
        const Sample sample = columns.at(x0 + i);
        samples.first[i] = sample.first;
        samples.second[i] = sample.second;
        samples.secondWeight[i] = sample.secondWeight;
    }
}

void resampleRow(const std::uint8_t* HWY_RESTRICT src, const ColumnSamples& samples,
                 std::int32_t* HWY_RESTRICT row, std::int32_t count) {
    constexpr int kShift = kWeightBits - kPassBits;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t weight = samples.secondWeight[i];
        const std::int32_t sum =
            src[samples.first[i]] * (kWeightOne - weight) + src[samples.second[i]] * weight;
        row[i] = (sum + (1 << (kShift - 1))) >> kShift;
    }
}

void blendRows(const std::int32_t* HWY_RESTRICT first, const std::int32_t* HWY_RESTRICT second,
               std::int32_t secondWeight, std::uint8_t* HWY_RESTRICT dst, std::int32_t count) {
    constexpr int kShift = kWeightBits + kPassBits;
    const std::int32_t firstWeight = kWeightOne - secondWeight;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t sum = first[i] * firstWeight + second[i] * secondWeight;
        dst[i] = static_cast<std::uint8_t>((sum + (1 << (kShift - 1))) >> kShift);
    }
}

// Source rows of one block of columns, resampled on demand. Output rows run downwards, so that the
// second row of one is often the first row of the next.
class ResampledRows {
public:
    ResampledRows(const Plane& plane, std::int32_t x0, std::int32_t count)
        : m_plane(plane), m_count(count) {
        locateColumns(plane.columns, x0, count, m_samples);
    }

    void request(std::int32_t first, std::int32_t second) {
        if (m_index[0] != first) {
            std::swap(m_rows[0], m_rows[1]);
            std::swap(m_index[0], m_index[1]);
        }
        provide(0, first);
        if (second != first) {
            provide(1, second);
        }
    }
    const std::int32_t* first() const { return m_rows[0]; }
    const std::int32_t* second(bool sameAsFirst) const { return m_rows[sameAsFirst ? 0 : 1]; }

private:
    void provide(int slot, std::int32_t y) {
        if (m_index[slot] != y) {
            resampleRow(rowAt(m_plane.src, m_plane.srcStep, static_cast<std::size_t>(y)), m_samples,
                        m_rows[slot], m_count);
            m_index[slot] = y;
        }
    }

    const Plane& m_plane;
    std::int32_t m_count;
    ColumnSamples m_samples;
    std::int32_t m_buffers[2][kBlock];
    std::int32_t* m_rows[2] = {m_buffers[0], m_buffers[1]};
    std::int32_t m_index[2] = {-1, -1};
};

} // namespace

void resampleU8(const Plane& plane, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                std::int32_t h) {
    std::int32_t count;
    for (std::int32_t x0 = 0; x0 < w; x0 += count) {
        count = std::min(kBlock, w - x0);
        ResampledRows rows(plane, x0, count);
        for (std::int32_t y = 0; y < h; ++y) {
            const Sample sample = plane.rows.at(y);
            rows.request(sample.first, sample.second);
            blendRows(rows.first(), rows.second(sample.first == sample.second), sample.secondWeight,
                      rowAt(dst, dstStep, static_cast<std::size_t>(y)) + x0, count);
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(resampleU8);

std::int32_t resampledLength(std::int32_t srcLength, double factor, std::int32_t limit) noexcept {
    // A product that misses a whole number by the rounding of the factor still counts as whole.
    const double length = std::floor(srcLength * factor + 0.0000001);
    return length < limit ? static_cast<std::int32_t>(length) : limit;
}

PixelRect cutToImage(const PixelRect& rect, std::int32_t w, std::int32_t h) noexcept {
    const std::int64_t left = std::max<std::int64_t>(rect.x, 0);
    const std::int64_t top = std::max<std::int64_t>(rect.y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{rect.x} + rect.w, w);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{rect.y} + rect.h, h);
    return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
            static_cast<std::int32_t>(std::max<std::int64_t>(right - left, 0)),
            static_cast<std::int32_t>(std::max<std::int64_t>(bottom - top, 0))};
}

} // namespace

Status resizeU8(const std::uint8_t* src, std::int32_t srcW, std::int32_t srcH, std::int32_t srcStep,
                const PixelRect& srcRect, std::uint8_t* dst, std::int32_t dstStep,
                std::int32_t dstW, std::int32_t dstH, double xFactor, double yFactor,
                std::int32_t interpolation) noexcept {
    if (src == nullptr || dst == nullptr) {
        return kNullPointer;
    }
    const PixelRect rect = cutToImage(srcRect, srcW, srcH);
    if (!(xFactor > 0.0) || !(yFactor > 0.0)) {
        return kBadSize;
    }
    const Status status = checkArguments(
        {}, {srcW, srcH, srcRect.w, srcRect.h, rect.w, rect.h, dstW, dstH}, {srcStep, dstStep});
    if (status != kOk) {
        return status;
    }
    if (interpolation != kLinear) {
        return kBadMask;
    }
    const Plane plane{rowAt(src, srcStep, static_cast<std::size_t>(rect.y)) + rect.x,
                      srcStep,
                      {rect.w, xFactor},
                      {rect.h, yFactor}};
    HWY_DYNAMIC_DISPATCH(resampleU8)
    (plane, dst, dstStep, resampledLength(srcW, xFactor, dstW),
     resampledLength(srcH, yFactor, dstH));
    return kOk;
}

} // namespace vel
#endif
