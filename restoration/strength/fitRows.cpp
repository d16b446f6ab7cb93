#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/strength/fitRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/strength/fitRows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

void disturbLanes(const float* HWY_RESTRICT y, const float* HWY_RESTRICT signs, float amount,
                  float* HWY_RESTRICT disturbed, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        disturbed[i] = y[i] + amount * signs[i];
    }
}

void subtractLanes(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b,
                   const float* HWY_RESTRICT signs, float* HWY_RESTRICT difference,
                   std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = a[i] - b[i];
        difference[i] = signs[i] != 0.0f ? value : 0.0f;
    }
}

double dotLanes(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b, std::size_t count) {
    constexpr std::size_t kSums = 16;
    double sums[kSums] = {};
    for (std::size_t i = 0; i < count; i += kSums) {
        for (std::size_t lane = 0; lane < kSums; ++lane) {
            sums[lane] += static_cast<double>(a[i + lane]) * static_cast<double>(b[i + lane]);
        }
    }
    for (std::size_t half = kSums / 2; half > 0; half /= 2) {
        for (std::size_t lane = 0; lane < half; ++lane) {
            sums[lane] += sums[lane + half];
        }
    }
    return sums[0];
}

void multiplyLanes(const float* HWY_RESTRICT factors, float* HWY_RESTRICT target,
                   std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] *= factors[i];
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(disturbLanes);
HWY_EXPORT(subtractLanes);
HWY_EXPORT(dotLanes);
HWY_EXPORT(multiplyLanes);

void disturbRow(const float* y, const float* signs, float amount, float* disturbed,
                std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(disturbLanes)(y, signs, amount, disturbed, count);
}

void subtractKept(const float* a, const float* b, const float* signs, float* difference,
                  std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(subtractLanes)(a, b, signs, difference, count);
}

double dotRow(const float* a, const float* b, std::size_t count) noexcept {
    return HWY_DYNAMIC_DISPATCH(dotLanes)(a, b, count);
}

void multiplyRow(const float* factors, float* target, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(multiplyLanes)(factors, target, count);
}

} // namespace restoration
#endif
