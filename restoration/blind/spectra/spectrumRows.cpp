#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/blind/spectra/spectrumRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/blind/spectra/spectrumRows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

void squares(float* HWY_RESTRICT first, const float* HWY_RESTRICT second, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        first[i] = first[i] * first[i] + second[i] * second[i];
    }
}

void products(float* HWY_RESTRICT product, const float* HWY_RESTRICT factor, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        product[i] *= factor[i];
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(squares);
HWY_EXPORT(products);

void sumOfSquares(float* first, const float* second, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(squares)(first, second, count);
}

void multiplyBy(float* product, const float* factor, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(products)(product, factor, count);
}

} // namespace restoration
#endif
