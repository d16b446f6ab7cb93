#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/pixels/PlaneCopies.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

void fillRow(float value, Unaligned<float>* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i].value = value;
    }
}

void copyMaskedRow(const Unaligned<float>* HWY_RESTRICT src, Unaligned<float>* HWY_RESTRICT dst,
                   const std::uint8_t* HWY_RESTRICT mask, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const float kept = dst[i].value;
        const float taken = src[i].value;
        dst[i].value = mask[i] != 0 ? taken : kept;
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(fillRow);
HWY_EXPORT(copyMaskedRow);

Status copyPlaneF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const Extent extent =
        joinAdjacentRows(w, h, {{srcStep, sizeof(float)}, {dstStep, sizeof(float)}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        std::memcpy(rowAt(unaligned(dst), dstStep, y), rowAt(unaligned(src), srcStep, y),
                    extent.columns * sizeof(float));
    }
    return kOk;
}

Status setPlaneF32(float value, float* dst, std::int32_t dstStep, std::int32_t w,
                   std::int32_t h) noexcept {
    if (const Status status = checkArguments({dst}, {w, h}, {dstStep})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{dstStep, sizeof(float)}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        HWY_DYNAMIC_DISPATCH(fillRow)
        (value, rowAt(unaligned(dst), dstStep, y), extent.columns);
    }
    return kOk;
}

Status copyMaskedF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     std::int32_t w, std::int32_t h, const std::uint8_t* mask,
                     std::int32_t maskStep) noexcept {
    if (const Status status =
            checkArguments({src, dst, mask}, {w, h}, {srcStep, dstStep, maskStep})) {
        return status;
    }
    const Extent extent =
        joinAdjacentRows(w, h, {{srcStep, sizeof(float)}, {dstStep, sizeof(float)}, {maskStep, 1}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        HWY_DYNAMIC_DISPATCH(copyMaskedRow)
        (rowAt(unaligned(src), srcStep, y), rowAt(unaligned(dst), dstStep, y),
         rowAt(mask, maskStep, y), extent.columns);
    }
    return kOk;
}

} // namespace vel
#endif
