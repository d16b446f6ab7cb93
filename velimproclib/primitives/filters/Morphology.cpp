#include "velimproclib/primitives/filters/Morphology.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/filters/neighbourhoods.h"

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/filters/Morphology.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// Of two equal or unordered values, the first is picked.
struct Larger {
    template <class T>
    T operator()(T first, T second) const {
        return second > first ? second : first;
    }
};

struct Smaller {
    template <class T>
    T operator()(T first, T second) const {
        return second < first ? second : first;
    }
};

template <class Pick, class Row>
auto pickOfThree(const Row* row, std::ptrdiff_t x) {
    return Pick()(Pick()(row[x - 1].value, row[x].value), row[x + 1].value);
}

template <class Pick>
void morphRowF32(const Unaligned<float>* above, const Unaligned<float>* middle,
                 const Unaligned<float>* below, Unaligned<float>* HWY_RESTRICT dst,
                 std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        const float upper = pickOfThree<Pick>(above, x);
        const float centre = pickOfThree<Pick>(middle, x);
        const float lower = pickOfThree<Pick>(below, x);
        dst[x].value = Pick()(Pick()(upper, centre), lower);
    }
}

template <class Pick>
void morphF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
              std::int32_t w, std::int32_t h) {
    for (std::int32_t y = 0; y < h; ++y) {
        const auto* middle = rowAt(unaligned(src), srcStep, static_cast<std::size_t>(y));
        morphRowF32<Pick>(bytesAway(middle, -srcStep), middle, rowAt(middle, srcStep, 1),
                          rowAt(unaligned(dst), dstStep, static_cast<std::size_t>(y)), w);
    }
}

template <class Pick>
void pickAlongRow(const std::uint8_t* HWY_RESTRICT row, std::uint8_t* HWY_RESTRICT picked,
                  std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        picked[x] = Pick()(Pick()(row[x - 1], row[x]), row[x + 1]);
    }
}

template <class Pick>
void morphRowInPlace(std::uint8_t* HWY_RESTRICT row, const std::uint8_t* HWY_RESTRICT below,
                     std::uint8_t* HWY_RESTRICT pickedAbove,
                     const std::uint8_t* HWY_RESTRICT picked, std::ptrdiff_t w) {
    for (std::ptrdiff_t x = 0; x < w; ++x) {
        const std::uint8_t pickedBelow = Pick()(Pick()(below[x - 1], below[x]), below[x + 1]);
        row[x] = Pick()(Pick()(pickedAbove[x], picked[x]), pickedBelow);
        pickedAbove[x] = pickedBelow;
    }
}

// The buffer holds the extremes along the row above and along the row itself, taken before these
// rows were overwritten. The extremes along the row below come from the image and replace those of
// the row above.
template <class Pick>
void morphInPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                    std::uint8_t* twoRows) {
    std::uint8_t* pickedAbove = twoRows;
    std::uint8_t* picked = twoRows + w;
    pickAlongRow<Pick>(bytesAway(srcDst, -step), pickedAbove, w);
    pickAlongRow<Pick>(srcDst, picked, w);
    for (std::int32_t y = 0; y < h; ++y) {
        std::uint8_t* row = rowAt(srcDst, step, static_cast<std::size_t>(y));
        morphRowInPlace<Pick>(row, rowAt(row, step, 1), pickedAbove, picked, w);
        std::swap(pickedAbove, picked);
    }
}

} // namespace

void dilateF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
               std::int32_t w, std::int32_t h) {
    morphF32<Larger>(src, srcStep, dst, dstStep, w, h);
}

void erodeF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
              std::int32_t w, std::int32_t h) {
    morphF32<Smaller>(src, srcStep, dst, dstStep, w, h);
}

void dilateInPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                     std::uint8_t* twoRows) {
    morphInPlaceU8<Larger>(srcDst, step, w, h, twoRows);
}

void erodeInPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                    std::uint8_t* twoRows) {
    morphInPlaceU8<Smaller>(srcDst, step, w, h, twoRows);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(dilateF32);
HWY_EXPORT(erodeF32);
HWY_EXPORT(dilateInPlaceU8);
HWY_EXPORT(erodeInPlaceU8);

template <class Morph>
Status withTwoRows(std::int32_t w, Morph&& morph) noexcept {
    constexpr std::int32_t kWidthOnStack = 4096;
    if (w <= kWidthOnStack) {
        std::array<std::uint8_t, 2 * kWidthOnStack> rows;
        morph(rows.data());
        return kOk;
    }
    const std::unique_ptr<std::uint8_t[]> rows(new (std::nothrow)
                                                   std::uint8_t[2 * static_cast<std::size_t>(w)]);
    if (!rows) {
        return kOutOfMemory;
    }
    morph(rows.get());
    return kOk;
}

using MorphF32 = void(const float*, std::int32_t, float*, std::int32_t, std::int32_t, std::int32_t);
using MorphInPlaceU8 = void(std::uint8_t*, std::int32_t, std::int32_t, std::int32_t, std::uint8_t*);

Status morph(MorphF32* kernel, const float* src, std::int32_t srcStep, float* dst,
             std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (const Status status = checkBorderStep(srcStep, w, 2, sizeof(float))) {
        return status;
    }
    kernel(src, srcStep, dst, dstStep, w, h);
    return kOk;
}

Status morphInPlace(MorphInPlaceU8* kernel, std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                    std::int32_t h) noexcept {
    if (const Status status = checkArguments({srcDst}, {w, h}, {step})) {
        return status;
    }
    if (const Status status = checkBorderStep(step, w, 2, 1)) {
        return status;
    }
    return withTwoRows(w, [&](std::uint8_t* twoRows) { kernel(srcDst, step, w, h, twoRows); });
}

} // namespace

Status dilate3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h) noexcept {
    return morph(HWY_DYNAMIC_DISPATCH(dilateF32), src, srcStep, dst, dstStep, w, h);
}

Status erode3x3F32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                   std::int32_t w, std::int32_t h) noexcept {
    return morph(HWY_DYNAMIC_DISPATCH(erodeF32), src, srcStep, dst, dstStep, w, h);
}

Status dilate3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept {
    return morphInPlace(HWY_DYNAMIC_DISPATCH(dilateInPlaceU8), srcDst, step, w, h);
}

Status erode3x3InPlaceU8(std::uint8_t* srcDst, std::int32_t step, std::int32_t w,
                         std::int32_t h) noexcept {
    return morphInPlace(HWY_DYNAMIC_DISPATCH(erodeInPlaceU8), srcDst, step, w, h);
}

} // namespace vel
#endif
