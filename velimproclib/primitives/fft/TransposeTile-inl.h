// Included once for each processor variant.

#if defined(VELORN_PRIMITIVES_TRANSPOSE_TILE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VELORN_PRIMITIVES_TRANSPOSE_TILE_INL_H
#undef VELORN_PRIMITIVES_TRANSPOSE_TILE_INL_H
#else
#define VELORN_PRIMITIVES_TRANSPOSE_TILE_INL_H
#endif

#include "velimproclib/primitives/base/rows.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <hwy/highway.h>

#include "velimproclib/primitives/base/unalignedVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

inline constexpr int kTileSide = 16;

using TileTag = HWY_CAPPED(float, 16);
using TileVec = hn::Vec<TileTag>;

#if HWY_TARGET != HWY_SCALAR
/// Four floats from column `left` on of rows `row`, `row` + 4, ..., side by side in one vector.
template <class D, class RowAt>
HWY_INLINE hn::Vec<D> loadEveryFourthRow(D d, RowAt rowAt, int row, int left) {
    if constexpr (hn::MaxLanes(D()) == 4) {
        return loadUnaligned(d, rowAt(row) + left * 4);
    } else {
        const hn::Half<D> half;
        constexpr auto kRows = static_cast<int>(hn::MaxLanes(D())) / 2;
        return hn::Combine(d, loadEveryFourthRow(half, rowAt, row + kRows, left),
                           loadEveryFourthRow(half, rowAt, row, left));
    }
}
#endif

/// Transposes a tile of 16 by 16 floats: to(c, r) = from(r, c). `rowAt(r)` is the address of a
/// source row; the distance of target rows is `toStepBytes`. Neither needs alignment. `change` maps
/// every vector between load and store.
///
/// The vectors are loaded in an order that leaves only transposes of 4 by 4 within their 128-bit
/// blocks.
template <class RowAt, class Change>
HWY_INLINE void transposeTile(RowAt rowAt, char* to, std::ptrdiff_t toStepBytes, Change change) {
    const TileTag d;
#if HWY_TARGET == HWY_SCALAR
    for (int column = 0; column < kTileSide; ++column) {
        for (int row = 0; row < kTileSide; ++row) {
            float value;
            std::memcpy(&value, rowAt(row) + column * 4, sizeof value);
            value = hn::GetLane(change(hn::Set(d, value)));
            std::memcpy(bytesAway(to, std::int64_t{toStepBytes} * column) + row * 4, &value,
                        sizeof value);
        }
    }
#else
    const hn::Repartition<double, TileTag> pairs;
    constexpr auto kRows = static_cast<int>(hn::MaxLanes(TileTag()));
    for (int top = 0; top < kTileSide; top += kRows) {
        for (int left = 0; left < kTileSide; left += 4) {
            const TileVec v0 = loadEveryFourthRow(d, rowAt, top, left);
            const TileVec v1 = loadEveryFourthRow(d, rowAt, top + 1, left);
            const TileVec v2 = loadEveryFourthRow(d, rowAt, top + 2, left);
            const TileVec v3 = loadEveryFourthRow(d, rowAt, top + 3, left);
            const auto low01 = hn::BitCast(pairs, hn::InterleaveLower(d, v0, v1));
            const auto high01 = hn::BitCast(pairs, hn::InterleaveUpper(d, v0, v1));
            const auto low23 = hn::BitCast(pairs, hn::InterleaveLower(d, v2, v3));
            const auto high23 = hn::BitCast(pairs, hn::InterleaveUpper(d, v2, v3));
            char* target = bytesAway(to, std::int64_t{toStepBytes} * left) + top * 4;
            const auto put = [&](int column, auto columnPairs) HWY_ATTR {
                storeUnaligned(change(hn::BitCast(d, columnPairs)), d,
                               bytesAway(target, std::int64_t{toStepBytes} * column));
            };
            put(0, hn::InterleaveLower(pairs, low01, low23));
            put(1, hn::InterleaveUpper(pairs, low01, low23));
            put(2, hn::InterleaveLower(pairs, high01, high23));
            put(3, hn::InterleaveUpper(pairs, high01, high23));
        }
    }
#endif
}

} // namespace
} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
