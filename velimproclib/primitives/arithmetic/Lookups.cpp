#include "velimproclib/primitives/arithmetic/Lookups.h"

#include "velimproclib/primitives/arithmetic/lookupPieces.h"
#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/arithmetic/Lookups.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/arithmetic/floatRows-inl.h"

// With up to 32 rising levels, which covers all tables of this library, the interval of a pixel is
// the number of levels that are not above it: a vector of pixels is compared with each level in
// turn, without a branch. The coefficients come from tables on the stack. More levels, or levels
// that do not rise, are processed pixel by pixel.

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

// One vector of pixels is searched at a time and evaluated as two vectors of doubles.
using Floats = hn::ScalableTag<float>;
using Indices = hn::RebindToSigned<Floats>;
using Doubles = hn::ScalableTag<double>;
using WideIndices = hn::RebindToSigned<Doubles>;
using FloatsOfDoubles = hn::Rebind<float, Doubles>;
using IndicesOfDoubles = hn::RebindToSigned<FloatsOfDoubles>;

/// How many levels each pixel reaches; NaN reaches none.
HWY_INLINE hn::Vec<Indices> levelsReached(hn::Vec<Floats> v, const LookupTable& table) {
    const Floats floats;
    const Indices indices;
    auto reached = hn::Zero(indices);
    for (std::int32_t i = 0; i < table.count; ++i) {
        const auto isReached = hn::Ge(v, hn::Set(floats, table.levels[i]));
#if HWY_TARGET <= HWY_AVX3
        // Masks are not vectors here: a masked addition takes one instruction.
        reached = hn::IfThenElse(hn::RebindMask(indices, isReached),
                                 hn::Add(reached, hn::Set(indices, 1)), reached);
#else
        reached = hn::Sub(reached, hn::BitCast(indices, hn::VecFromMask(floats, isReached)));
#endif
    }
    return reached;
}

/// Reads coefficients by gathered loads.
class GatheredEntries {
public:
    explicit HWY_INLINE GatheredEntries(hn::Vec<WideIndices> entry) : m_entry(entry) {}

    HWY_INLINE hn::Vec<Doubles> of(const double* table) const {
        return hn::GatherIndex(Doubles(), table, m_entry);
    }

private:
    hn::Vec<WideIndices> m_entry;
};

#if HWY_TARGET <= HWY_AVX3
/// Reads coefficients of at most 16 entries from two vectors, which is faster than gathered loads
/// here.
class PermutedEntries {
public:
    static constexpr std::int32_t kMaxEntries = 16;

    explicit HWY_INLINE PermutedEntries(hn::Vec<WideIndices> entry)
        : m_lane(hn::IndicesFromVec(Doubles(), hn::And(entry, hn::Set(WideIndices(), kLanes - 1)))),
          m_isInSecond(
              hn::RebindMask(Doubles(), hn::Gt(entry, hn::Set(WideIndices(), kLanes - 1)))) {}

    HWY_INLINE hn::Vec<Doubles> of(const double* table) const {
        const Doubles doubles;
        const auto first = hn::TableLookupLanes(hn::LoadU(doubles, table), m_lane);
        const auto second = hn::TableLookupLanes(hn::LoadU(doubles, table + kLanes), m_lane);
        return hn::IfThenElse(m_isInSecond, second, first);
    }

private:
    static constexpr std::int64_t kLanes = hn::MaxLanes(Doubles());
    static_assert(2 * kLanes == kMaxEntries);

    decltype(hn::IndicesFromVec(Doubles(), hn::Zero(WideIndices()))) m_lane;
    hn::Mask<Doubles> m_isInSecond;
};
#endif

struct LineLanes {
    template <class Entries>
    static HWY_INLINE hn::Vec<Doubles> at(hn::Vec<Doubles> v, const Entries& entries,
                                          const LookupTable& table) {
        const auto d = hn::Sub(v, entries.of(table.base));
        return hn::Add(hn::Mul(entries.of(table.c1), d), entries.of(table.value));
    }
};

struct CubicLanes {
    template <class Entries>
    static HWY_INLINE hn::Vec<Doubles> at(hn::Vec<Doubles> v, const Entries& entries,
                                          const LookupTable& table) {
        const auto d = hn::Sub(v, entries.of(table.base));
        auto sum = hn::Add(hn::Mul(entries.of(table.c3), d), entries.of(table.c2));
        sum = hn::Add(hn::Mul(sum, d), entries.of(table.c1));
        return hn::Add(hn::Mul(sum, d), entries.of(table.value));
    }
};

template <class Piece, class Entries>
HWY_INLINE hn::Vec<FloatsOfDoubles> evaluatedPart(hn::Vec<FloatsOfDoubles> v,
                                                  hn::Vec<IndicesOfDoubles> entry,
                                                  const LookupTable& table) {
    const auto wide = hn::PromoteTo(Doubles(), v);
    return roundedToFloats(FloatsOfDoubles(),
                           Piece::at(wide, Entries(hn::PromoteTo(WideIndices(), entry)), table));
}

template <class Piece, class Entries>
HWY_INLINE hn::Vec<Floats> evaluated(hn::Vec<Floats> v, hn::Vec<Indices> entry,
                                     const LookupTable& table) {
#if HWY_TARGET == HWY_SCALAR
    return evaluatedPart<Piece, Entries>(v, entry, table);
#else
    const FloatsOfDoubles half;
    const IndicesOfDoubles halfIndices;
    const auto lower = evaluatedPart<Piece, Entries>(hn::LowerHalf(half, v),
                                                     hn::LowerHalf(halfIndices, entry), table);
    const auto upper = evaluatedPart<Piece, Entries>(hn::UpperHalf(half, v),
                                                     hn::UpperHalf(halfIndices, entry), table);
    return hn::Combine(Floats(), upper, lower);
#endif
}

template <class Piece, class Entries>
void lookUpRowsWith(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    Extent extent, const LookupTable& table) {
    const Floats floats;
    const auto first = hn::Set(floats, table.levels[0]);
    const auto end = hn::Set(floats, table.levels[table.count - 1]);
    for (std::size_t y = 0; y < extent.rows; ++y) {
        mapFloats(floats, rowAt(unaligned(src), srcStep, y), rowAt(unaligned(dst), dstStep, y),
                  extent.columns, [&](auto v) HWY_ATTR {
                      const auto isInside = hn::And(hn::Ge(v, first), hn::Lt(v, end));
                      return hn::IfThenElse(
                          isInside, evaluated<Piece, Entries>(v, levelsReached(v, table), table),
                          v);
                  });
    }
}

template <class Piece>
void lookUpRows(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                Extent extent, const LookupTable& table) {
#if HWY_TARGET <= HWY_AVX3
    if (table.count < PermutedEntries::kMaxEntries) {
        return lookUpRowsWith<Piece, PermutedEntries>(src, srcStep, dst, dstStep, extent, table);
    }
#endif
    lookUpRowsWith<Piece, GatheredEntries>(src, srcStep, dst, dstStep, extent, table);
}

} // namespace

void lookUpLineRows(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    Extent extent, const LookupTable& table) {
    lookUpRows<LineLanes>(src, srcStep, dst, dstStep, extent, table);
}

void lookUpCubicRows(float* srcDst, std::int32_t step, Extent extent, const LookupTable& table) {
    lookUpRows<CubicLanes>(srcDst, step, srcDst, step, extent, table);
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

HWY_EXPORT(lookUpLineRows);
HWY_EXPORT(lookUpCubicRows);

/// True when no level is below its predecessor and none is NaN.
bool areRising(const float* levels, std::int32_t n) {
    for (std::int32_t k = 0; k + 1 < n; ++k) {
        if (!(levels[k] <= levels[k + 1])) {
            return false;
        }
    }
    return true;
}

LookupTable emptyTable(const float* levels, std::int32_t n) {
    LookupTable table{};
    table.levels = levels;
    table.count = n;
    return table;
}

LookupTable lineTable(const float* values, const float* levels, std::int32_t n) {
    LookupTable table = emptyTable(levels, n);
    for (std::int32_t k = 0; k + 1 < n; ++k) {
        const LinePiece piece = linePiece(values, levels, k);
        table.base[k + 1] = piece.base;
        table.value[k + 1] = piece.value;
        table.c1[k + 1] = piece.c1;
    }
    return table;
}

LookupTable cubicTable(const float* values, const float* levels, std::int32_t n) {
    LookupTable table = emptyTable(levels, n);
    for (std::int32_t k = 0; k + 1 < n; ++k) {
        const CubicPiece piece = cubicPiece(values, levels, n, k);
        table.base[k + 1] = piece.base;
        table.value[k + 1] = piece.value;
        table.c1[k + 1] = piece.c1;
        table.c2[k + 1] = piece.c2;
        table.c3[k + 1] = piece.c3;
    }
    return table;
}

constexpr std::int32_t kNone = -1;

std::int32_t intervalAmongRising(float v, const float* levels, std::int32_t n) {
    if (!(v >= levels[0] && v < levels[n - 1])) {
        return kNone;
    }
    return static_cast<std::int32_t>(std::upper_bound(levels, levels + n, v) - levels) - 1;
}

std::int32_t intervalAmongAny(float v, const float* levels, std::int32_t n) {
    for (std::int32_t k = 0; k + 1 < n; ++k) {
        if (levels[k] <= v && v < levels[k + 1]) {
            return k;
        }
    }
    return kNone;
}

/// The lookup for any levels and any number of them. It computes `pieceOf(k)` again for every pixel
/// and therefore stores nothing.
template <class PieceOf>
void lookUpPixels(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                  Extent extent, const float* levels, std::int32_t n, bool rising,
                  PieceOf pieceOf) {
    const auto intervalOf = rising ? intervalAmongRising : intervalAmongAny;
    for (std::size_t y = 0; y < extent.rows; ++y) {
        const auto* srcRow = rowAt(unaligned(src), srcStep, y);
        auto* dstRow = rowAt(unaligned(dst), dstStep, y);
        for (std::size_t x = 0; x < extent.columns; ++x) {
            const float v = srcRow[x].value;
            const std::int32_t k = intervalOf(v, levels, n);
            dstRow[x].value = k == kNone ? v : static_cast<float>(pieceOf(k).at(v));
        }
    }
}

} // namespace

Status lutLinearF32(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                    std::int32_t w, std::int32_t h, const float* values, const float* levels,
                    std::int32_t n) noexcept {
    if (const Status status =
            checkArguments({src, dst, values, levels}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    if (n < 2) {
        return kTooFewLutLevels;
    }
    const Extent extent =
        joinAdjacentRows(w, h, {{srcStep, sizeof(float)}, {dstStep, sizeof(float)}});
    const bool rising = areRising(levels, n);
    if (rising && n <= LookupTable::kMaxLevels) {
        HWY_DYNAMIC_DISPATCH(lookUpLineRows)
        (src, srcStep, dst, dstStep, extent, lineTable(values, levels, n));
    } else {
        lookUpPixels(src, srcStep, dst, dstStep, extent, levels, n, rising,
                     [=](std::int32_t k) { return linePiece(values, levels, k); });
    }
    return kOk;
}

Status lutCubicInPlaceF32(float* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                          const float* values, const float* levels, std::int32_t n) noexcept {
    constexpr std::int32_t kCubicKnots = 4;
    if (n < kCubicKnots) {
        return lutLinearF32(srcDst, step, srcDst, step, w, h, values, levels, n);
    }
    if (const Status status = checkArguments({srcDst, values, levels}, {w, h}, {step})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{step, sizeof(float)}});
    const bool rising = areRising(levels, n);
    if (rising && n <= LookupTable::kMaxLevels) {
        HWY_DYNAMIC_DISPATCH(lookUpCubicRows)
        (srcDst, step, extent, cubicTable(values, levels, n));
    } else {
        lookUpPixels(srcDst, step, srcDst, step, extent, levels, n, rising,
                     [=](std::int32_t k) { return cubicPiece(values, levels, n, k); });
    }
    return kOk;
}

} // namespace vel
#endif
