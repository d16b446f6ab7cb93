// The vector form of the shrink function, for inclusion once per processor variant.
#if defined(VELORN_SHRINK_CURVE_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_SHRINK_CURVE_INL
#undef VELORN_SHRINK_CURVE_INL
#else
#define VELORN_SHRINK_CURVE_INL
#endif

#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

/// table[index] for every lane; the table has `count` entries. Wide vectors permute registers that
/// hold the table, narrow vectors load each element.
template <class D, class VI>
HWY_INLINE auto lookUp(D d, const float* table, std::size_t count, VI index) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    constexpr std::size_t kLanes = hn::MaxLanes(D());
    if constexpr (kLanes < 8) {
        return hn::GatherIndex(d, table, index);
    } else {
        const auto lane = hn::And(index, hn::Set(di, static_cast<int>(kLanes - 1)));
        const auto lanes = hn::IndicesFromVec(d, lane);
        auto value = hn::TableLookupLanes(hn::Load(d, table), lanes);
        for (std::size_t first = kLanes; first < count; first += kLanes) {
            const auto here = hn::Gt(index, hn::Set(di, static_cast<int>(first - 1)));
            const auto entries = hn::TableLookupLanes(hn::Load(d, table + first), lanes);
            value = hn::IfThenElse(hn::RebindMask(d, here), entries, value);
        }
        return value;
    }
}

/// `count`, plus 1 where `mask` is true.
template <class DI, class M, class VI>
HWY_INLINE VI countWhere(DI di, M mask, VI count) {
    namespace hn = hwy::HWY_NAMESPACE;
    const auto here = hn::RebindMask(di, mask);
    if constexpr (hn::MaxLanes(DI()) >= 16) { // masks have registers of their own
        return hn::IfThenElse(here, hn::Add(count, hn::Set(di, 1)), count);
    } else {
        return hn::Sub(count, hn::VecFromMask(di, here));
    }
}

/// shrink(v) for every lane. Most gradients of an image lie in the dead zone, therefore the
/// function returns early when all lanes do. Otherwise it finds the segment without branches: the
/// number of knots below v. The result of a lane does not depend on its neighbours.
template <class D, class V>
HWY_INLINE V shrinkLanes(D d, const ShrinkCurve& curve, V v) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::RebindToSigned<D> di;
    const auto dead =
        hn::And(hn::Ge(v, hn::Set(d, curve.deadFrom)), hn::Le(v, hn::Set(d, curve.deadTo)));
    if (HWY_LIKELY(hn::AllTrue(d, dead))) {
        return hn::Zero(d);
    }
    const auto last = hn::Set(d, curve.last);
    const auto x = hn::Min(hn::Max(v, hn::Set(d, curve.first)), last);

    auto left = hn::Zero(di); // knots below v; two counters shorten the dependency chain
    auto right = hn::Zero(di);
    for (std::size_t k = 0; k < curve.sideKnots; ++k) {
        left = countWhere(di, hn::Gt(x, hn::Set(d, curve.negativeKnots[k])), left);
        right = countWhere(di, hn::Ge(x, hn::Set(d, curve.positiveKnots[k])), right);
    }
    const auto segment = hn::Add(left, right);

    const std::size_t segments = 2 * curve.sideKnots + 1;
    const auto distance = hn::Sub(x, lookUp(d, curve.anchor.data(), segments, segment));
    const auto rise = hn::Mul(distance, lookUp(d, curve.slope.data(), segments, segment));
    const auto line = hn::Add(rise, lookUp(d, curve.value.data(), segments, segment));
    const auto bounded = hn::IfThenElse(hn::Ge(v, last), last, line);
    return hn::IfThenElse(hn::IsNaN(v), v, bounded);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
