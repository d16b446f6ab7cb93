#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve-inl.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"

#include <algorithm>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

void shrinkDifferenceLanes(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                           float* w, std::size_t count) {
    namespace hn = hwy::HWY_NAMESPACE;
    const auto shrinkAt = [&](auto d, std::size_t i) HWY_ATTR {
        const auto v = hn::Sub(hn::LoadU(d, minuend + i), hn::LoadU(d, subtrahend + i));
        hn::StoreU(shrinkLanes(d, curve, v), d, w + i);
    };
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        shrinkAt(d, i);
    }
    const hn::CappedTag<float, 1> one;
    for (; i < count; ++i) {
        shrinkAt(one, i);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

ShrinkCurve::ShrinkCurve(const StoredShrink& stored) noexcept
    : first(stored.levels[0]), last(stored.levels[stored.knots - 1]),
      sideKnots(static_cast<std::size_t>(stored.knots / 2 - 1)), negativeKnots{},
      positiveKnots{}, anchor{}, slope{}, value{} {
    const std::size_t right = sideKnots + 1; // the dead zone lies between the two middle knots
    deadFrom = stored.levels[right - 1];
    deadTo = stored.levels[right];
    std::copy_n(stored.levels + 1, sideKnots, negativeKnots.begin());
    std::copy_n(stored.levels + right, sideKnots, positiveKnots.begin());
    for (std::size_t k = 0; k < 2 * sideKnots + 1; ++k) {
        const std::size_t nearer = k < right ? k + 1 : k;
        const double rise = static_cast<double>(stored.values[k + 1]) - stored.values[k];
        const double run = static_cast<double>(stored.levels[k + 1]) - stored.levels[k];
        anchor[k] = stored.levels[nearer];
        slope[k] = static_cast<float>(rise / run);
        value[k] = stored.values[nearer];
    }
}

HWY_EXPORT(shrinkDifferenceLanes);

void shrinkDifferenceRow(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                         float* w, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(shrinkDifferenceLanes)(curve, minuend, subtrahend, w, count);
}

} // namespace vel
#endif
