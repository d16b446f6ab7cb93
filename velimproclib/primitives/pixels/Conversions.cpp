#include "velimproclib/primitives/pixels/Conversions.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <bit>
#include <cstddef>
#include <limits>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/pixels/Conversions.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/base/unalignedVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

template <class From, class To>
void widenRow(const Unaligned<From>* HWY_RESTRICT src, Unaligned<To>* HWY_RESTRICT dst,
              std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i].value = static_cast<To>(src[i].value);
    }
}

void saturateRow(const Unaligned<std::uint16_t>* HWY_RESTRICT src,
                 Unaligned<std::uint8_t>* HWY_RESTRICT dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint16_t value = src[i].value;
        dst[i].value = static_cast<std::uint8_t>(value > 255 ? 255 : value);
    }
}

/// Clamps to the range of `To`; NaN gives 0. The ends of the range are integers; therefore the
/// result is the same as with rounding first.
template <class To>
float saturate(float value) {
    constexpr float kLowest = std::numeric_limits<To>::min();
    constexpr float kHighest = std::numeric_limits<To>::max();
    const float number = value == value ? value : 0.0f;
    const float notBelow = number > kLowest ? number : kLowest;
    return notBelow < kHighest ? notBelow : kHighest;
}

/// A sum with 1.5 * 2^23 has no fraction bits: its own rounding, to nearest with ties to even,
/// leaves the integer in the low bits. This holds for integers of up to 16 bits and needs no
/// rounding instruction.
constexpr float kNoFraction = 12582912.0f;

template <bool nearest>
std::int32_t roundInRange(float value) {
    if constexpr (nearest) {
        return std::bit_cast<std::int32_t>(value + kNoFraction) -
               std::bit_cast<std::int32_t>(kNoFraction);
    } else {
        return static_cast<std::int32_t>(value);
    }
}

#if HWY_TARGET != HWY_SCALAR
namespace hn = hwy::HWY_NAMESPACE;

template <class To, class D, class V = hn::Vec<D>>
V saturateLanes(D d, V values) {
    const V highest = hn::Set(d, std::numeric_limits<To>::max());
    if constexpr (std::is_unsigned_v<To>) {
        const V positive = hn::IfThenElseZero(hn::Gt(values, hn::Zero(d)), values);
        return hn::Min(positive, highest);
    } else {
        const V numbers = hn::IfThenElseZero(hn::Eq(values, values), values);
        return hn::Min(hn::Max(numbers, hn::Set(d, std::numeric_limits<To>::min())), highest);
    }
}

template <bool nearest, class D>
auto roundLanesInRange(D d, hn::Vec<D> values) {
    const hn::RebindToSigned<D> integers;
    if constexpr (nearest) {
        const auto noFraction = hn::Set(d, kNoFraction);
        return hn::Sub(hn::BitCast(integers, hn::Add(values, noFraction)),
                       hn::BitCast(integers, noFraction));
    } else {
        return hn::ConvertTo(integers, values);
    }
}

/// Rounds whole vectors and returns the number of elements done. The compiler's code for the plain
/// loop narrows every comparison to the small elements and takes twice as long on cached data.
template <class To, bool nearest>
std::size_t roundWholeVectors(const Unaligned<float>* HWY_RESTRICT src,
                              Unaligned<To>* HWY_RESTRICT dst, std::size_t n) {
    const hn::ScalableTag<float> d;
    const hn::Rebind<To, decltype(d)> narrow;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const auto values = saturateLanes<To>(d, loadUnaligned(d, src + i));
        storeUnaligned(hn::DemoteTo(narrow, roundLanesInRange<nearest>(d, values)), narrow,
                       dst + i);
    }
    return i;
}
#else
template <class To, bool nearest>
std::size_t roundWholeVectors(const Unaligned<float>*, Unaligned<To>*, std::size_t) {
    return 0;
}
#endif

template <class To, bool nearest>
void roundRow(const Unaligned<float>* HWY_RESTRICT src, Unaligned<To>* HWY_RESTRICT dst,
              std::size_t n) {
    for (std::size_t i = roundWholeVectors<To, nearest>(src, dst, n); i < n; ++i) {
        dst[i].value = static_cast<To>(roundInRange<nearest>(saturate<To>(src[i].value)));
    }
}

template <class To>
void roundRow(const Unaligned<float>* src, Unaligned<To>* dst, std::size_t n, std::int32_t round) {
    if (round == kToNearestEven) {
        roundRow<To, true>(src, dst, n);
    } else {
        roundRow<To, false>(src, dst, n);
    }
}

} // namespace

void rowU8toF32(const Unaligned<std::uint8_t>* src, Unaligned<float>* dst, std::size_t n) {
    widenRow(src, dst, n);
}
void rowU16toF32(const Unaligned<std::uint16_t>* src, Unaligned<float>* dst, std::size_t n) {
    widenRow(src, dst, n);
}
void rowS16toF32(const Unaligned<std::int16_t>* src, Unaligned<float>* dst, std::size_t n) {
    widenRow(src, dst, n);
}
void rowU8toU16(const Unaligned<std::uint8_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    widenRow(src, dst, n);
}
void rowU16toU8(const Unaligned<std::uint16_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    saturateRow(src, dst, n);
}
void rowF32toU8(const Unaligned<float>* src, Unaligned<std::uint8_t>* dst, std::size_t n,
                std::int32_t round) {
    roundRow(src, dst, n, round);
}
void rowF32toU16(const Unaligned<float>* src, Unaligned<std::uint16_t>* dst, std::size_t n,
                 std::int32_t round) {
    roundRow(src, dst, n, round);
}
void rowF32toS16(const Unaligned<float>* src, Unaligned<std::int16_t>* dst, std::size_t n,
                 std::int32_t round) {
    roundRow(src, dst, n, round);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(rowU8toF32);
HWY_EXPORT(rowU16toF32);
HWY_EXPORT(rowS16toF32);
HWY_EXPORT(rowU8toU16);
HWY_EXPORT(rowU16toU8);
HWY_EXPORT(rowF32toU8);
HWY_EXPORT(rowF32toU16);
HWY_EXPORT(rowF32toS16);

namespace {

/// Checks the arguments and runs the row kernel over the rows. `round` is the rounding code of the
/// kernels that take one.
template <class Row, class From, class To, class... Round>
Status convertRows(Row&& row, const Unaligned<From>* src, std::int32_t srcStep, Unaligned<To>* dst,
                   std::int32_t dstStep, std::int32_t w, std::int32_t h, Round... round) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{srcStep, sizeof(From)}, {dstStep, sizeof(To)}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        row(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), extent.columns, round...);
    }
    return kOk;
}

} // namespace

Status convertU8toF32(const std::uint8_t* src, std::int32_t srcStep, float* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowU8toF32), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h);
}

Status convertU16toF32(const std::uint16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowU16toF32), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h);
}

Status convertS16toF32(const std::int16_t* src, std::int32_t srcStep, float* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowS16toF32), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h);
}

Status convertU8toU16(const std::uint8_t* src, std::int32_t srcStep, Unaligned<std::uint16_t>* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowU8toU16), unaligned(src), srcStep, dst, dstStep, w,
                       h);
}

Status convertU16toU8(const std::uint16_t* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowU16toU8), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h);
}

Status convertF32toU8(const float* src, std::int32_t srcStep, std::uint8_t* dst,
                      std::int32_t dstStep, std::int32_t w, std::int32_t h,
                      std::int32_t round) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowF32toU8), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h, round);
}

Status convertF32toU16(const float* src, std::int32_t srcStep, std::uint16_t* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h,
                       std::int32_t round) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowF32toU16), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h, round);
}

Status convertF32toS16(const float* src, std::int32_t srcStep, std::int16_t* dst,
                       std::int32_t dstStep, std::int32_t w, std::int32_t h,
                       std::int32_t round) noexcept {
    return convertRows(HWY_DYNAMIC_DISPATCH(rowF32toS16), unaligned(src), srcStep, unaligned(dst),
                       dstStep, w, h, round);
}

} // namespace vel
#endif
