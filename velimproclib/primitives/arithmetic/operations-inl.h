// The operations of the element-wise families on two numbers. Included once for each processor
// variant.
#if defined(VELORN_PRIMITIVES_OPERATIONS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_OPERATIONS_INL_H
#undef VELORN_PRIMITIVES_OPERATIONS_INL_H
#else
#define VELORN_PRIMITIVES_OPERATIONS_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

struct Sum {
    template <class T>
    static T of(T a, T b) {
        return a + b;
    }
};
struct Difference {
    template <class T>
    static T of(T a, T b) {
        return a - b;
    }
};
struct Product {
    template <class T>
    static T of(T a, T b) {
        return a * b;
    }
};

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
