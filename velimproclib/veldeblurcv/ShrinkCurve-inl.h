// The vector form of the shrink function, for inclusion once per processor variant.
#if defined(VELORN_SHRINK_CURVE_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_SHRINK_CURVE_INL
#undef VELORN_SHRINK_CURVE_INL
#else
#define VELORN_SHRINK_CURVE_INL
#endif

#include "velimproclib/veldeblurcv/ShrinkCurve.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

/// shrink(v) for every lane. Most gradients of an image lie in the dead zone, and its edges little
/// beyond it: all lanes dead is an early end, and the walk outwards stops at the first segment that
/// no lane reaches. A lane's result does not depend on its neighbours.
template <class D, class V>
HWY_INLINE V shrinkLanes(D d, const ShrinkCurve& curve, V v) {
    namespace hn = hwy::HWY_NAMESPACE;
    const auto dead = hn::And(hn::Ge(v, hn::Set(d, curve.negative.anchor[0])),
                              hn::Le(v, hn::Set(d, curve.positive.anchor[0])));
    if (HWY_LIKELY(hn::AllTrue(d, dead))) {
        return hn::Zero(d);
    }
    const auto last = hn::Set(d, curve.last);
    const auto x = hn::Min(hn::Max(v, hn::Set(d, curve.first)), last);
    auto anchor = hn::Zero(d);
    auto slope = hn::Zero(d);
    auto value = hn::Zero(d);
    const auto walk = [&](const ShrinkCurve::Side& side, auto&& reaches) HWY_ATTR {
        for (std::size_t k = 0; k < curve.segments; ++k) {
            const auto edge = hn::Set(d, side.anchor[k]);
            const auto reached = reaches(edge);
            if (hn::AllFalse(d, reached)) {
                return;
            }
            anchor = hn::IfThenElse(reached, edge, anchor);
            slope = hn::IfThenElse(reached, hn::Set(d, side.slope[k]), slope);
            value = hn::IfThenElse(reached, hn::Set(d, side.value[k]), value);
        }
    };
    walk(curve.positive, [&](V edge) HWY_ATTR { return hn::Ge(x, edge); });
    walk(curve.negative, [&](V edge) HWY_ATTR { return hn::Le(x, edge); });
    const auto line = hn::Add(hn::Mul(hn::Sub(x, anchor), slope), value);
    const auto bounded = hn::IfThenElse(hn::Ge(v, last), last, line);
    return hn::IfThenElse(hn::IsNaN(v), v, bounded);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
