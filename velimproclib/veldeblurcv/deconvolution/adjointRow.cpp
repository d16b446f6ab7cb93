#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/deconvolution/adjointRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

void adjointLanes(const float* wx, const float* wyAbove, const float* wy,
                  float* HWY_RESTRICT adjoint, std::size_t count) {
    adjoint[0] = (wyAbove[0] - wy[0]) + 0.0f;
    for (std::size_t c = 1; c < count; ++c) {
        adjoint[c] = (wyAbove[c] - wy[c]) + (wx[c - 1] - wx[c]);
    }
}

void firstAdjointLanes(const float* wx, float* HWY_RESTRICT adjoint, std::size_t count) {
    adjoint[0] = 0.0f;
    for (std::size_t c = 1; c < count; ++c) {
        adjoint[c] = 0.0f + (wx[c - 1] - wx[c]);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(adjointLanes);
HWY_EXPORT(firstAdjointLanes);

void adjointRow(const float* wx, const float* wyAbove, const float* wy, float* adjoint,
                std::size_t count) noexcept {
    if (wyAbove == nullptr) {
        HWY_DYNAMIC_DISPATCH(firstAdjointLanes)(wx, adjoint, count);
    } else {
        HWY_DYNAMIC_DISPATCH(adjointLanes)(wx, wyAbove, wy, adjoint, count);
    }
}

} // namespace vel
#endif
