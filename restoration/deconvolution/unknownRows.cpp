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

void extrapolateLanes(float share, const float* HWY_RESTRICT values, float* HWY_RESTRICT previous,
                      float* HWY_RESTRICT next, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = values[i];
        next[i] = value + share * (value - previous[i]);
        previous[i] = value;
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(replaceLanes);
HWY_EXPORT(extrapolateLanes);

void replaceUnknown(const std::uint8_t* known, const float* source, float* target,
                    std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(replaceLanes)(known, source, target, count);
}

void extrapolate(float share, const float* values, float* previous, float* next,
                 std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(extrapolateLanes)(share, values, previous, next, count);
}

} // namespace restoration
#endif
