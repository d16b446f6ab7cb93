#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/ShrinkCurve.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/veldeblurcv/ShrinkCurve-inl.h"
#include "velimproclib/veldeblurcv/ShrinkCurve.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

namespace {

/// w[i] = shrink(load(d, i)); `load` gives the lanes of `d` from element i on.
template <class Load>
HWY_INLINE void shrinkEach(const ShrinkCurve& curve, float* w, std::size_t count,
                           const Load& load) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(shrinkLanes(d, curve, load(d, i)), d, w + i);
    }
    const hn::CappedTag<float, 1> one;
    for (; i < count; ++i) {
        hn::StoreU(shrinkLanes(one, curve, load(one, i)), one, w + i);
    }
}

} // namespace

void shrinkRowLanes(const ShrinkCurve& curve, const float* v, float* w, std::size_t count) {
    namespace hn = hwy::HWY_NAMESPACE;
    shrinkEach(curve, w, count,
               [v](auto d, std::size_t i) HWY_ATTR { return hn::LoadU(d, v + i); });
}

void shrinkDifferenceLanes(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                           float* w, std::size_t count) {
    namespace hn = hwy::HWY_NAMESPACE;
    shrinkEach(curve, w, count, [minuend, subtrahend](auto d, std::size_t i) HWY_ATTR {
        return hn::Sub(hn::LoadU(d, minuend + i), hn::LoadU(d, subtrahend + i));
    });
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

/// The segment between the knots `near` and `far`, anchored at `near`.
void setSegment(ShrinkCurve::Side& side, std::size_t k, const StoredShrink& stored, int near,
                int far) noexcept {
    const double rise = static_cast<double>(stored.values[far]) - stored.values[near];
    const double run = static_cast<double>(stored.levels[far]) - stored.levels[near];
    side.anchor[k] = stored.levels[near];
    side.slope[k] = static_cast<float>(rise / run);
    side.value[k] = stored.values[near];
}

} // namespace

ShrinkCurve::ShrinkCurve(const StoredShrink& stored) noexcept
    : segments(static_cast<std::size_t>(stored.knots / 2 - 1)), first(stored.levels[0]),
      last(stored.levels[stored.knots - 1]), negative{}, positive{} {
    const int right = stored.knots / 2; // the dead zone lies between the two middle knots
    const int left = right - 1;
    for (std::size_t k = 0; k < segments; ++k) {
        const int step = static_cast<int>(k);
        setSegment(positive, k, stored, right + step, right + step + 1);
        setSegment(negative, k, stored, left - step, left - step - 1);
    }
}

HWY_EXPORT(shrinkRowLanes);
HWY_EXPORT(shrinkDifferenceLanes);

void shrinkRow(const ShrinkCurve& curve, const float* v, float* w, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(shrinkRowLanes)(curve, v, w, count);
}

void shrinkDifferenceRow(const ShrinkCurve& curve, const float* minuend, const float* subtrahend,
                         float* w, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(shrinkDifferenceLanes)(curve, minuend, subtrahend, w, count);
}

} // namespace vel
#endif
