#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/deconvolution/unknownRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/deconvolution/unknownRows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

void replaceLanes(const std::uint8_t* HWY_RESTRICT known, const float* HWY_RESTRICT source,
                  float* HWY_RESTRICT target, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float here = target[i];
        const float other = source[i];
        target[i] = known[i] != 0 ? here : other;
    }
}

void subtractLanes(const std::uint8_t* known, const float* a, const float* b, float* difference,
                   std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = a[i] - b[i];
        difference[i] = known[i] != 0 ? 0.0f : value;
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

void addScaledLanes(float factor, const float* HWY_RESTRICT source, float* HWY_RESTRICT target,
                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = target[i] + factor * source[i];
    }
}

void addToScaledLanes(float factor, const float* HWY_RESTRICT source, float* HWY_RESTRICT target,
                      std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = source[i] + factor * target[i];
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(replaceLanes);
HWY_EXPORT(subtractLanes);
HWY_EXPORT(dotLanes);
HWY_EXPORT(addScaledLanes);
HWY_EXPORT(addToScaledLanes);

void replaceUnknown(const std::uint8_t* known, const float* source, float* target,
                    std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(replaceLanes)(known, source, target, count);
}

void subtractUnknown(const std::uint8_t* known, const float* a, const float* b, float* difference,
                     std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(subtractLanes)(known, a, b, difference, count);
}

double dotRow(const float* a, const float* b, std::size_t count) noexcept {
    return HWY_DYNAMIC_DISPATCH(dotLanes)(a, b, count);
}

void addScaledRow(float factor, const float* source, float* target, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(addScaledLanes)(factor, source, target, count);
}

void addToScaledRow(float factor, const float* source, float* target, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(addToScaledLanes)(factor, source, target, count);
}

} // namespace restoration
#endif
