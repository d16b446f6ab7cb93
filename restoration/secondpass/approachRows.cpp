#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/secondpass/approachRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/secondpass/approachRows.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;
using Tag = hn::CappedTag<float, kLanes>;

HWY_INLINE hn::Vec<Tag> kernelPower(const float* kernel) {
    const Tag d;
    const auto re = hn::Load(d, kernel);
    const auto im = hn::Load(d, kernel + kLanes);
    return hn::Add(hn::Mul(re, re), hn::Mul(im, im));
}

} // namespace

void approachLanes(const float* kernel, const float* numerator, float weight, float* x,
                   std::size_t rows) {
    const Tag d;
    const auto w = hn::Set(d, weight);
    for (std::size_t row = 0; row < rows * kRowFloats; row += kRowFloats) {
        for (std::size_t at = row; at < row + kLanes; at += hn::Lanes(d)) {
            const auto denominator = hn::Add(kernelPower(kernel + at), w);
            for (const std::size_t part : {at, at + kLanes}) {
                const auto drawn = hn::Mul(w, hn::Load(d, x + part));
                const auto sum = hn::Add(hn::Load(d, numerator + part), drawn);
                hn::Store(hn::Div(sum, denominator), d, x + part);
            }
        }
    }
}

void remainingNoiseLanes(const float* kernel, float weight, float* power, std::size_t rows) {
    const Tag d;
    const auto w = hn::Set(d, weight);
    for (std::size_t row = 0; row < rows * kRowFloats; row += kRowFloats) {
        for (std::size_t at = row; at < row + kLanes; at += hn::Lanes(d)) {
            const auto p = kernelPower(kernel + at);
            const auto denominator = hn::Add(p, w);
            hn::Store(hn::Div(p, hn::Mul(denominator, denominator)), d, power + at);
            hn::Store(hn::Zero(d), d, power + at + kLanes);
        }
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(approachLanes);
HWY_EXPORT(remainingNoiseLanes);

void approachRows(const float* kernel, const float* numerator, float weight, float* x,
                  std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(approachLanes)(kernel, numerator, weight, x, rows);
}

void remainingNoiseRows(const float* kernel, float weight, float* power,
                        std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(remainingNoiseLanes)(kernel, weight, power, rows);
}

} // namespace restoration
#endif
