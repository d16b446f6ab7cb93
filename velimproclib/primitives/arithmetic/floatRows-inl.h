// Maps rows of floats through functions on explicit vectors. Included once for each processor
// variant.
#if defined(VELORN_PRIMITIVES_FLOAT_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#undef VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#else
#define VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#endif

#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <cstring>
#include <hwy/highway.h>

#include "velimproclib/primitives/base/unalignedVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Rounds doubles to floats. Doubles beyond the range of floats give infinity; on the variants
/// without vectors, `DemoteTo` would keep them finite.
template <class DF, class VD>
HWY_INLINE hn::Vec<DF> roundedToFloats(DF d, VD v) {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
    HWY_ALIGN double wide[hn::MaxLanes(d)];
    HWY_ALIGN float narrow[hn::MaxLanes(d)];
    hn::Store(v, hn::Rebind<double, DF>(), wide);
    for (std::size_t lane = 0; lane < hn::MaxLanes(d); ++lane) {
        narrow[lane] = static_cast<float>(wide[lane]);
    }
    return hn::Load(d, narrow);
#else
    return hn::DemoteTo(d, v);
#endif
}

/// dst = of(src) for `count` floats. `dst` is `src` or does not overlap it. `of` maps vectors of
/// `d`, a tag of floats, lane by lane. At the end of the row some of its lanes are zeros whose
/// results are dropped.
template <class D, class Of>
HWY_INLINE void mapFloats(D d, const Unaligned<float>* src, Unaligned<float>* dst,
                          std::size_t count, const Of& of) {
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        storeUnaligned(of(loadUnaligned(d, src + i)), d, dst + i);
    }
    if (i < count) {
        HWY_ALIGN float rest[hn::MaxLanes(d)] = {};
        const std::size_t bytes = (count - i) * sizeof(float);
        std::memcpy(rest, src + i, bytes);
        hn::Store(of(hn::Load(d, rest)), d, rest);
        std::memcpy(dst + i, rest, bytes);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
