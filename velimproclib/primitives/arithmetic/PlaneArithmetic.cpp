#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/arithmetic/PlaneArithmetic.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/arithmetic/elementary-inl.h"
#include "velimproclib/primitives/arithmetic/floatRows-inl.h"
#include "velimproclib/primitives/arithmetic/operations-inl.h"

// The loops carry `omp simd`: a target that is one of the sources is the same plane, therefore the
// elements are independent. Without it, the compiler's overlap test selects the scalar loop for
// exactly this case.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

struct AtMost {
    static float of(float v, float level) { return v > level ? level : v; }
};
struct AtLeast {
    static float of(float v, float level) { return v < level ? level : v; }
};

struct Less {
    static bool of(float a, float b) { return a < b; }
};
struct LessOrEqual {
    static bool of(float a, float b) { return a <= b; }
};
struct Equal {
    static bool of(float a, float b) { return a == b; }
};
struct GreaterOrEqual {
    static bool of(float a, float b) { return a >= b; }
};
struct Greater {
    static bool of(float a, float b) { return a > b; }
};

template <class Operation>
void combineRows(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep, float* dst,
                 std::int32_t dstStep, Extent extent) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* aRow = rowAt(unaligned(a), aStep, y);
        const auto* bRow = rowAt(unaligned(b), bStep, y);
        auto* dstRow = rowAt(unaligned(dst), dstStep, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            dstRow[x].value = Operation::of(aRow[x].value, bRow[x].value);
        }
    }
}

template <class Operation>
void combineRowsWithConst(const float* src, std::int32_t srcStep, float c, float* dst,
                          std::int32_t dstStep, Extent extent) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = rowAt(unaligned(src), srcStep, y);
        auto* dstRow = rowAt(unaligned(dst), dstStep, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            dstRow[x].value = Operation::of(srcRow[x].value, c);
        }
    }
}

template <class Relation>
void compareRowsBy(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                   std::uint8_t* dst, std::int32_t dstStep, Extent extent) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* aRow = rowAt(unaligned(a), aStep, y);
        const auto* bRow = rowAt(unaligned(b), bStep, y);
        std::uint8_t* dstRow = rowAt(dst, dstStep, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            dstRow[x] = Relation::of(aRow[x].value, bRow[x].value) ? 255 : 0;
        }
    }
}

} // namespace

void addRows(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep, float* dst,
             std::int32_t dstStep, Extent extent) {
    combineRows<Sum>(a, aStep, b, bStep, dst, dstStep, extent);
}

void subtractRows(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, Extent extent) {
    combineRows<Difference>(a, aStep, b, bStep, dst, dstStep, extent);
}

void multiplyRows(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                  float* dst, std::int32_t dstStep, Extent extent) {
    combineRows<Product>(a, aStep, b, bStep, dst, dstStep, extent);
}

/// True when a divisor was zero.
bool divideRows(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                Extent extent) {
    std::int32_t zeros = 0;
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = rowAt(unaligned(src), srcStep, y);
        auto* srcDstRow = rowAt(unaligned(srcDst), srcDstStep, y);
#pragma omp simd reduction(| : zeros)
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const float divisor = srcRow[x].value;
            zeros |= divisor == 0.0f ? 1 : 0;
            srcDstRow[x].value = srcDstRow[x].value / divisor;
        }
    }
    return zeros != 0;
}

void addConstRows(const float* src, std::int32_t srcStep, float c, float* dst, std::int32_t dstStep,
                  Extent extent) {
    combineRowsWithConst<Sum>(src, srcStep, c, dst, dstStep, extent);
}

void mulConstRows(const float* src, std::int32_t srcStep, float c, float* dst, std::int32_t dstStep,
                  Extent extent) {
    combineRowsWithConst<Product>(src, srcStep, c, dst, dstStep, extent);
}

void clampAboveRows(const float* src, std::int32_t srcStep, float level, float* dst,
                    std::int32_t dstStep, Extent extent) {
    combineRowsWithConst<AtMost>(src, srcStep, level, dst, dstStep, extent);
}

void clampBelowRows(const float* src, std::int32_t srcStep, float level, float* dst,
                    std::int32_t dstStep, Extent extent) {
    combineRowsWithConst<AtLeast>(src, srcStep, level, dst, dstStep, extent);
}

/// True when an element was zero or negative.
bool logRows(float* srcDst, std::int32_t step, Extent extent) {
    const hn::ScalableTag<double> wide;
    const hn::Rebind<float, decltype(wide)> narrow;
    std::int32_t outside = 0;
    for (std::size_t y = 0; y < extent.rows; ++y) {
        auto* row = rowAt(unaligned(srcDst), step, y);
#pragma omp simd reduction(| : outside)
        for (std::size_t x = 0; x < extent.columns; ++x) {
            outside |= row[x].value <= 0.0f ? 1 : 0;
        }
        mapFloats(narrow, row, row, extent.columns, [=](auto v) HWY_ATTR {
            return roundedToFloats(narrow, naturalLog(wide, hn::PromoteTo(wide, v)));
        });
    }
    return outside != 0;
}

void compareRows(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                 std::uint8_t* dst, std::int32_t dstStep, Extent extent, Comparison op) {
    switch (op) {
    case kLess:
        return compareRowsBy<Less>(a, aStep, b, bStep, dst, dstStep, extent);
    case kLessOrEqual:
        return compareRowsBy<LessOrEqual>(a, aStep, b, bStep, dst, dstStep, extent);
    case kEqual:
        return compareRowsBy<Equal>(a, aStep, b, bStep, dst, dstStep, extent);
    case kGreaterOrEqual:
        return compareRowsBy<GreaterOrEqual>(a, aStep, b, bStep, dst, dstStep, extent);
    case kGreater:
        return compareRowsBy<Greater>(a, aStep, b, bStep, dst, dstStep, extent);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

constexpr std::size_t kF32 = sizeof(float);

HWY_EXPORT(addRows);
HWY_EXPORT(subtractRows);
HWY_EXPORT(multiplyRows);
HWY_EXPORT(divideRows);
HWY_EXPORT(addConstRows);
HWY_EXPORT(mulConstRows);
HWY_EXPORT(clampAboveRows);
HWY_EXPORT(clampBelowRows);
HWY_EXPORT(logRows);
HWY_EXPORT(compareRows);

Extent joined(std::int32_t w, std::int32_t h, std::int32_t step) {
    return joinAdjacentRows(w, h, {{step, kF32}});
}

Extent joined(std::int32_t w, std::int32_t h, std::int32_t step, std::int32_t otherStep) {
    return joinAdjacentRows(w, h, {{step, kF32}, {otherStep, kF32}});
}

using CombineRows = void (*)(const float*, std::int32_t, const float*, std::int32_t, float*,
                             std::int32_t, Extent);
using CombineRowsWithConst = void (*)(const float*, std::int32_t, float, float*, std::int32_t,
                                      Extent);

Status combinePlanes(CombineRows combine, const float* a, std::int32_t aStep, const float* b,
                     std::int32_t bStep, float* dst, std::int32_t dstStep, std::int32_t w,
                     std::int32_t h) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    combine(a, aStep, b, bStep, dst, dstStep,
            joinAdjacentRows(w, h, {{aStep, kF32}, {bStep, kF32}, {dstStep, kF32}}));
    return kOk;
}

Status combineWithConst(CombineRowsWithConst combine, const float* src, std::int32_t srcStep,
                        float c, float* dst, std::int32_t dstStep, std::int32_t w,
                        std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    combine(src, srcStep, c, dst, dstStep, joined(w, h, srcStep, dstStep));
    return kOk;
}

} // namespace

Status addPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept {
    return combinePlanes(HWY_DYNAMIC_DISPATCH(addRows), srcDst, srcDstStep, src, srcStep, srcDst,
                         srcDstStep, w, h);
}

Status subPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept {
    return combinePlanes(HWY_DYNAMIC_DISPATCH(subtractRows), srcDst, srcDstStep, src, srcStep,
                         srcDst, srcDstStep, w, h);
}

Status mulPlaneF32(const float* src, std::int32_t srcStep, float* srcDst, std::int32_t srcDstStep,
                   std::int32_t w, std::int32_t h) noexcept {
    return combinePlanes(HWY_DYNAMIC_DISPATCH(multiplyRows), srcDst, srcDstStep, src, srcStep,
                         srcDst, srcDstStep, w, h);
}

Status divPlaneInPlaceF32(const float* src, std::int32_t srcStep, float* srcDst,
                          std::int32_t srcDstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, srcDst}, {w, h}, {srcStep, srcDstStep})) {
        return status;
    }
    const bool zeros = HWY_DYNAMIC_DISPATCH(divideRows)(src, srcStep, srcDst, srcDstStep,
                                                        joined(w, h, srcStep, srcDstStep));
    return zeros ? kDivisionByZero : kOk;
}

Status subPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return combinePlanes(HWY_DYNAMIC_DISPATCH(subtractRows), b, bStep, a, aStep, dst, dstStep, w,
                         h);
}

Status mulConstF32(const float* src, std::int32_t srcStep, float c, float* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return combineWithConst(HWY_DYNAMIC_DISPATCH(mulConstRows), src, srcStep, c, dst, dstStep, w,
                            h);
}

Status addConstInPlaceF32(float c, float* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept {
    return combineWithConst(HWY_DYNAMIC_DISPATCH(addConstRows), srcDst, step, c, srcDst, step, w,
                            h);
}

Status mulConstInPlaceF32(float c, float* srcDst, std::int32_t step, std::int32_t w,
                          std::int32_t h) noexcept {
    return combineWithConst(HWY_DYNAMIC_DISPATCH(mulConstRows), srcDst, step, c, srcDst, step, w,
                            h);
}

Status clampAboveInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                            float level) noexcept {
    return combineWithConst(HWY_DYNAMIC_DISPATCH(clampAboveRows), srcDst, step, level, srcDst, step,
                            w, h);
}

Status clampBelowInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                            float level) noexcept {
    return combineWithConst(HWY_DYNAMIC_DISPATCH(clampBelowRows), srcDst, step, level, srcDst, step,
                            w, h);
}

Status logInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({srcDst}, {w, h}, {step})) {
        return status;
    }
    const bool outside = HWY_DYNAMIC_DISPATCH(logRows)(srcDst, step, joined(w, h, step));
    return outside ? kDivisionByZero : kOk;
}

Status comparePlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                        std::uint8_t* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h,
                        Comparison op) noexcept {
    if (const Status status = checkArguments({a, b, dst}, {w, h}, {aStep, bStep, dstStep})) {
        return status;
    }
    if (op < kLess || op > kGreater) {
        return kBadMask;
    }
    const Extent extent =
        joinAdjacentRows(w, h, {{aStep, kF32}, {bStep, kF32}, {dstStep, sizeof(std::uint8_t)}});
    HWY_DYNAMIC_DISPATCH(compareRows)(a, aStep, b, bStep, dst, dstStep, extent, op);
    return kOk;
}

} // namespace vel
#endif
