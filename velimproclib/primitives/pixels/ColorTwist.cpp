#include "velimproclib/primitives/pixels/ColorTwist.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/pixels/ColorTwist.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

float twisted(const float row[4], float p0, float p1, float p2) {
    return row[0] * p0 + row[1] * p1 + row[2] * p2 + row[3];
}

} // namespace

void twistRows(float* const planes[3], std::int32_t step, Extent extent, const float coef[3][4]) {
    // No plane can overlap this copy; therefore the coefficients stay in registers.
    float matrix[3][4];
    std::copy_n(&coef[0][0], 12, &matrix[0][0]);
    for (std::size_t y = 0; y < extent.rows; ++y) {
        auto* row0 = rowAt(unaligned(planes[0]), step, y);
        auto* row1 = rowAt(unaligned(planes[1]), step, y);
        auto* row2 = rowAt(unaligned(planes[2]), step, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const float p0 = row0[x].value;
            const float p1 = row1[x].value;
            const float p2 = row2[x].value;
            row0[x].value = twisted(matrix[0], p0, p1, p2);
            row1[x].value = twisted(matrix[1], p0, p1, p2);
            row2[x].value = twisted(matrix[2], p0, p1, p2);
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(twistRows);

} // namespace

Status colorTwistP3F32(float* const planes[3], std::int32_t step, std::int32_t w, std::int32_t h,
                       const float coef[3][4]) noexcept {
    if (planes == nullptr) {
        return kNullPointer;
    }
    if (const Status status =
            checkArguments({planes[0], planes[1], planes[2], coef}, {w, h}, {step})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(twistRows)
    (planes, step, joinAdjacentRows(w, h, {{step, sizeof(float)}}), coef);
    return kOk;
}

} // namespace vel
#endif
