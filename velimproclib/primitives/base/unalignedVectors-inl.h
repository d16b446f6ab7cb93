// Vectors at addresses of any alignment. Included once for each processor variant.
#if defined(VELORN_PRIMITIVES_UNALIGNED_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_UNALIGNED_VECTORS_INL_H
#undef VELORN_PRIMITIVES_UNALIGNED_VECTORS_INL_H
#else
#define VELORN_PRIMITIVES_UNALIGNED_VECTORS_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

// Highway's unaligned loads and stores take a pointer to the element type but accept any address:
// here alone such a pointer is formed.

/// The vector of `d` whose elements start at `from`.
template <class D>
HWY_INLINE hwy::HWY_NAMESPACE::Vec<D> loadUnaligned(D d, const void* from) {
    using T = hwy::HWY_NAMESPACE::TFromD<D>;
    return hwy::HWY_NAMESPACE::LoadU(d, static_cast<const T*>(from));
}

template <class D>
HWY_INLINE void storeUnaligned(hwy::HWY_NAMESPACE::Vec<D> v, D d, void* to) {
    using T = hwy::HWY_NAMESPACE::TFromD<D>;
    hwy::HWY_NAMESPACE::StoreU(v, d, static_cast<T*>(to));
}

#if HWY_TARGET != HWY_SCALAR
/// The vectors of `d` of the first, second and third elements of the triples that start at `from`.
template <class D>
HWY_INLINE void loadInterleaved3Unaligned(D d, const void* from, hwy::HWY_NAMESPACE::Vec<D>& first,
                                          hwy::HWY_NAMESPACE::Vec<D>& second,
                                          hwy::HWY_NAMESPACE::Vec<D>& third) {
    using T = hwy::HWY_NAMESPACE::TFromD<D>;
    hwy::HWY_NAMESPACE::LoadInterleaved3(d, static_cast<const T*>(from), first, second, third);
}
#endif

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
