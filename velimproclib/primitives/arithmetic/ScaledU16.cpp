#include "velimproclib/primitives/arithmetic/ScaledU16.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/arithmetic/ScaledU16.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/arithmetic/operations-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

constexpr std::uint32_t kMax = 65535;

std::uint32_t saturated(std::uint32_t v) {
    return v > kMax ? kMax : v;
}

struct DifferenceOrZero {
    static std::uint32_t of(std::uint32_t v, std::uint32_t value) {
        return v > value ? v - value : 0;
    }
};

template <class Operation>
void multipliedRows(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::uint32_t value,
                    Unaligned<std::uint16_t>* dst, std::int32_t dstStep, Extent extent,
                    unsigned shift) {
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = rowAt(src, srcStep, y);
        auto* dstRow = rowAt(dst, dstStep, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const std::uint32_t v = saturated(Operation::of(std::uint32_t{srcRow[x].value}, value));
            dstRow[x].value = static_cast<std::uint16_t>(saturated(v << shift));
        }
    }
}

template <class Operation>
void dividedRows(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::uint32_t value,
                 Unaligned<std::uint16_t>* dst, std::int32_t dstStep, Extent extent,
                 unsigned shift) {
    const std::uint32_t belowHalf = (std::uint32_t{1} << (shift - 1)) - 1;
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = rowAt(src, srcStep, y);
        auto* dstRow = rowAt(dst, dstStep, y);
#pragma omp simd
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const std::uint32_t v = Operation::of(std::uint32_t{srcRow[x].value}, value);
            const std::uint32_t odd = (v >> shift) & 1;
            dstRow[x].value = static_cast<std::uint16_t>(saturated((v + belowHalf + odd) >> shift));
        }
    }
}

template <class Operation>
void scaledRows(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::uint32_t value,
                Unaligned<std::uint16_t>* dst, std::int32_t dstStep, Extent extent,
                std::int32_t scale) {
    // A 17-bit value divided by 2^18 or more is 0. A value other than 0 saturates when multiplied
    // by 2^16 or more.
    constexpr std::int32_t kLargest = 18;
    constexpr std::int32_t kSmallest = -16;
    const std::int32_t limited = std::clamp(scale, kSmallest, kLargest);
    if (limited > 0) {
        dividedRows<Operation>(src, srcStep, value, dst, dstStep, extent,
                               static_cast<unsigned>(limited));
    } else {
        multipliedRows<Operation>(src, srcStep, value, dst, dstStep, extent,
                                  static_cast<unsigned>(-limited));
    }
}

} // namespace

void addScaledRows(std::uint16_t value, Unaligned<std::uint16_t>* srcDst, std::int32_t step,
                   Extent extent, std::int32_t scale) {
    scaledRows<Sum>(srcDst, step, value, srcDst, step, extent, scale);
}

void subScaledRows(const Unaligned<std::uint16_t>* src, std::int32_t srcStep, std::uint16_t value,
                   Unaligned<std::uint16_t>* dst, std::int32_t dstStep, Extent extent,
                   std::int32_t scale) {
    scaledRows<DifferenceOrZero>(src, srcStep, value, dst, dstStep, extent, scale);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(addScaledRows);
HWY_EXPORT(subScaledRows);

constexpr std::size_t kU16 = sizeof(std::uint16_t);

} // namespace

Status addConstScaledU16(std::uint16_t value, Unaligned<std::uint16_t>* srcDst, std::int32_t step,
                         std::int32_t w, std::int32_t h, std::int32_t scale) noexcept {
    if (const Status status = checkArguments({srcDst}, {w, h}, {step})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(addScaledRows)
    (value, srcDst, step, joinAdjacentRows(w, h, {{step, kU16}}), scale);
    return kOk;
}

Status subConstScaledU16(const Unaligned<std::uint16_t>* src, std::int32_t srcStep,
                         std::uint16_t value, Unaligned<std::uint16_t>* dst, std::int32_t dstStep,
                         std::int32_t w, std::int32_t h, std::int32_t scale) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    HWY_DYNAMIC_DISPATCH(subScaledRows)
    (src, srcStep, value, dst, dstStep, joinAdjacentRows(w, h, {{srcStep, kU16}, {dstStep, kU16}}),
     scale);
    return kOk;
}

} // namespace vel
#endif
