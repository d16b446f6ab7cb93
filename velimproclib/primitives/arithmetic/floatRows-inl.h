// Rows of floats through a function on vectors, for the kernels that are written with explicit
// vectors. Included once for each processor variant.
#if defined(VELORN_PRIMITIVES_FLOAT_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#undef VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#else
#define VELORN_PRIMITIVES_FLOAT_ROWS_INL_H
#endif

#include <cstddef>
#include <cstring>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Rounds doubles to floats; those beyond the range of floats give infinity. `DemoteTo` would keep
/// them finite on the variants without vectors.
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

/// dst = of(src) for `count` floats at any address; `dst` is `src` or lies apart from it. `of` maps
/// vectors of `d`, a tag of floats, lane by lane; at the end of the row it also sees lanes that
/// hold zeros and whose results are dropped.
template <class D, class Of>
HWY_INLINE void mapFloats(D d, const float* src, float* dst, std::size_t count, const Of& of) {
    const std::size_t lanes = hn::Lanes(d);
    const auto* from = reinterpret_cast<const unsigned char*>(src);
    auto* to = reinterpret_cast<unsigned char*>(dst);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const std::size_t offset = i * sizeof(float);
        hn::StoreU(of(hn::LoadU(d, reinterpret_cast<const float*>(from + offset))), d,
                   reinterpret_cast<float*>(to + offset));
    }
    if (i < count) {
        HWY_ALIGN float rest[hn::MaxLanes(d)] = {};
        const std::size_t bytes = (count - i) * sizeof(float);
        std::memcpy(rest, from + i * sizeof(float), bytes);
        hn::Store(of(hn::Load(d, rest)), d, rest);
        std::memcpy(to + i * sizeof(float), rest, bytes);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
