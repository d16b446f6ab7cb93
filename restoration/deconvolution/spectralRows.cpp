#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/deconvolution/spectralRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/deconvolution/spectralRows.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;
using Tag = hn::CappedTag<float, kLanes>;
using Vec = hn::Vec<Tag>;

/// combine(kernelPower, prior, re, im) for every vector of the rows: `prior` is the second term of
/// the denominator; the references are to the parts of `spectrum`, which are stored afterwards.
template <class Combine>
HWY_INLINE void forEachVector(const Denominator& denominator, float* spectrum, std::size_t rows,
                              const Combine& combine) {
    const Tag d;
    const std::size_t step = hn::Lanes(d);
    const auto weight = hn::Set(d, denominator.weight);
    for (std::size_t row = 0; row < rows; ++row) {
        const auto vertical = hn::Set(d, denominator.rowPower[row]);
        const float* power = denominator.kernelPower + row * kLanes;
        for (std::size_t lane = 0; lane < kLanes; lane += step) {
            const std::size_t at = row * kRowFloats + lane;
            const auto gradient = hn::Add(hn::Load(d, denominator.columnPower + lane), vertical);
            auto re = hn::Load(d, spectrum + at);
            auto im = hn::Load(d, spectrum + at + kLanes);
            combine(hn::Load(d, power + lane), hn::Mul(weight, gradient), at, re, im);
            hn::Store(re, d, spectrum + at);
            hn::Store(im, d, spectrum + at + kLanes);
        }
    }
}

} // namespace

void multiplyLanes(const float* a, const float* b, float* product, std::size_t rows) {
    const Tag d;
    const std::size_t step = hn::Lanes(d);
    for (std::size_t row = 0; row < rows * kRowFloats; row += kRowFloats) {
        for (std::size_t at = row; at < row + kLanes; at += step) {
            const auto aRe = hn::Load(d, a + at);
            const auto aIm = hn::Load(d, a + at + kLanes);
            const auto bRe = hn::Load(d, b + at);
            const auto bIm = hn::Load(d, b + at + kLanes);
            hn::Store(hn::Sub(hn::Mul(aRe, bRe), hn::Mul(aIm, bIm)), d, product + at);
            hn::Store(hn::Add(hn::Mul(aRe, bIm), hn::Mul(aIm, bRe)), d, product + at + kLanes);
        }
    }
}

void reblurLanes(const Denominator& denominator, float* x, std::size_t rows) {
    forEachVector(denominator, x, rows,
                  [](Vec power, Vec prior, std::size_t, Vec& re, Vec& im) HWY_ATTR {
                      const auto gain = hn::Div(power, hn::Add(power, prior));
                      re = hn::Mul(re, gain);
                      im = hn::Mul(im, gain);
                  });
}

void divideLanes(const Denominator& denominator, float* y, std::size_t rows) {
    forEachVector(denominator, y, rows,
                  [](Vec power, Vec prior, std::size_t, Vec& re, Vec& im) HWY_ATTR {
                      const auto sum = hn::Add(power, prior);
                      re = hn::Div(re, sum);
                      im = hn::Div(im, sum);
                  });
}

void divideTowardsMeanLanes(const Denominator& denominator, const float* mean, float* y,
                            std::size_t rows) {
    const Tag d;
    forEachVector(denominator, y, rows,
                  [=](Vec power, Vec prior, std::size_t at, Vec& re, Vec& im) HWY_ATTR {
                      const auto sum = hn::Add(power, prior);
                      const auto meanRe = hn::Load(d, mean + at);
                      const auto meanIm = hn::Load(d, mean + at + kLanes);
                      re = hn::Div(hn::Add(re, hn::Mul(prior, meanRe)), sum);
                      im = hn::Div(hn::Add(im, hn::Mul(prior, meanIm)), sum);
                  });
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(multiplyLanes);
HWY_EXPORT(reblurLanes);
HWY_EXPORT(divideLanes);
HWY_EXPORT(divideTowardsMeanLanes);

void multiplySpectra(const float* a, const float* b, float* product, std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(multiplyLanes)(a, b, product, rows);
}

void reblurRows(const Denominator& denominator, float* x, std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(reblurLanes)(denominator, x, rows);
}

void divideRows(const Denominator& denominator, float* y, std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(divideLanes)(denominator, y, rows);
}

void divideTowardsMean(const Denominator& denominator, const float* mean, float* y,
                       std::size_t rows) noexcept {
    HWY_DYNAMIC_DISPATCH(divideTowardsMeanLanes)(denominator, mean, y, rows);
}

} // namespace restoration
#endif
