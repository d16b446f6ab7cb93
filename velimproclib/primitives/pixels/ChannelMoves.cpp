#include "velimproclib/primitives/pixels/ChannelMoves.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <bit>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/primitives/pixels/ChannelMoves.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

/// The plain move into one of three channels, from element `begin` on.
template <class T>
void intoChannel(const Unaligned<T>* HWY_RESTRICT src, Unaligned<T>* HWY_RESTRICT dst,
                 std::size_t begin, std::size_t n) {
    for (std::size_t i = begin; i < n; ++i) {
        dst[3 * i].value = src[i].value;
    }
}

/// Takes one of three channels. The compiler's shuffles of this loop are as fast as written ones.
template <class T>
void fromChannel(const Unaligned<T>* HWY_RESTRICT src, Unaligned<T>* HWY_RESTRICT dst,
                 std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i].value = src[3 * i].value;
    }
}

/// A pixel of four bytes as one word, the channel in its low byte. As arithmetic on whole words,
/// filling a channel compiles to a few vector instructions; as a store to every fourth byte it
/// compiles to one byte at a time. The last pixel of a row is filled by its byte alone: the region
/// ends with that byte.
struct [[gnu::packed, gnu::may_alias]] Pixel {
    static_assert(std::endian::native == std::endian::little);
    std::uint32_t word;

    void setChannel(std::uint8_t value) {
        word = (word & 0xFFFFFF00u) | value;
    }
};

#if HWY_TARGET != HWY_SCALAR
namespace hn = hwy::HWY_NAMESPACE;

/// Pixels of three elements are filled 48 bytes at a time: 16 bytes of the plane go to three blocks
/// of 16 bytes of the image, for every vector width. The table of a block holds for each of its
/// bytes the source byte in the plane, or `kNone` for a byte of another channel.
constexpr std::size_t kBlockBytes = 16;
constexpr std::uint8_t kNone = 0x80;

struct alignas(kBlockBytes) BlockTables {
    std::uint8_t byte[3][kBlockBytes];
};

template <std::size_t elementBytes>
constexpr BlockTables spreadTables() {
    BlockTables tables{};
    for (std::size_t i = 0; i < 3 * kBlockBytes; ++i) {
        const std::size_t element = i / elementBytes;
        const std::size_t from = element / 3 * elementBytes + i % elementBytes;
        tables.byte[i / kBlockBytes][i % kBlockBytes] =
            element % 3 == 0 ? static_cast<std::uint8_t>(from) : kNone;
    }
    return tables;
}

using BlockTag = hn::FixedTag<std::uint8_t, kBlockBytes>;
using BlockVector = hn::Vec<BlockTag>;

/// Fills a channel of whole triples of blocks and returns the number of elements done. It never
/// does the last element, because the two elements after that one must not be touched.
template <class T>
std::size_t intoBlocks(const Unaligned<T>* HWY_RESTRICT src, Unaligned<T>* HWY_RESTRICT dst,
                       std::size_t n) {
    static constexpr BlockTables kSpread = spreadTables<sizeof(T)>();
    constexpr std::size_t kElements = kBlockBytes / sizeof(T);
    const BlockTag d;
    BlockVector table[3];
    hn::Mask<BlockTag> isChannel[3];
    for (std::size_t block = 0; block < 3; ++block) {
        table[block] = hn::Load(d, kSpread.byte[block]);
        isChannel[block] = hn::Ne(table[block], hn::Set(d, kNone));
    }
    const auto* from = reinterpret_cast<const std::uint8_t*>(src);
    auto* to = reinterpret_cast<std::uint8_t*>(dst);
    std::size_t i = 0;
    for (; i + kElements < n; i += kElements) {
        const BlockVector plane = hn::LoadU(d, from);
        from += kBlockBytes;
        for (std::size_t block = 0; block < 3; ++block, to += kBlockBytes) {
            const BlockVector spread = hn::TableLookupBytes(plane, table[block]);
            hn::StoreU(hn::IfThenElse(isChannel[block], spread, hn::LoadU(d, to)), d, to);
        }
    }
    return i;
}
#else
template <class T>
std::size_t intoBlocks(const Unaligned<T>*, Unaligned<T>*, std::size_t) {
    return 0;
}
#endif

} // namespace

void intoC3U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    intoChannel(src, dst, intoBlocks(src, dst, n), n);
}
void intoC3U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    intoChannel(src, dst, intoBlocks(src, dst, n), n);
}
void fromC3U16(const Unaligned<std::uint16_t>* src, Unaligned<std::uint16_t>* dst, std::size_t n) {
    fromChannel(src, dst, n);
}
void intoC4U8(const Unaligned<std::uint8_t>* HWY_RESTRICT src,
              Unaligned<std::uint8_t>* HWY_RESTRICT dst, std::size_t n) {
    auto* HWY_RESTRICT pixels = reinterpret_cast<Pixel*>(dst);
    for (std::size_t i = 0; i + 1 < n; ++i) {
        pixels[i].setChannel(src[i].value);
    }
    dst[4 * (n - 1)].value = src[n - 1].value;
}
void fromC3U8(const Unaligned<std::uint8_t>* src, Unaligned<std::uint8_t>* dst, std::size_t n) {
    fromChannel(src, dst, n);
}
void fillC4U8(std::uint8_t value, std::uint8_t* dst, std::size_t n) {
    auto* pixels = reinterpret_cast<Pixel*>(dst);
    for (std::size_t i = 0; i + 1 < n; ++i) {
        pixels[i].setChannel(value);
    }
    dst[4 * (n - 1)] = value;
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(intoC3U8);
HWY_EXPORT(intoC3U16);
HWY_EXPORT(intoC4U8);
HWY_EXPORT(fromC3U8);
HWY_EXPORT(fromC3U16);
HWY_EXPORT(fillC4U8);

namespace {

/// Checks the arguments and runs the row kernel over the rows. Pixels have `srcChannels` and
/// `dstChannels` elements.
template <std::size_t srcChannels, std::size_t dstChannels, class Row, class T>
Status moveRows(Row&& row, const Unaligned<T>* src, std::int32_t srcStep, Unaligned<T>* dst,
                std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    if (const Status status = checkArguments({src, dst}, {w, h}, {srcStep, dstStep})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(
        w, h, {{srcStep, srcChannels * sizeof(T)}, {dstStep, dstChannels * sizeof(T)}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        row(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), extent.columns);
    }
    return kOk;
}

} // namespace

Status planeToChannelC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 3>(HWY_DYNAMIC_DISPATCH(intoC3U8), unaligned(src), srcStep, unaligned(dst),
                          dstStep, w, h);
}

Status planeToChannelC3U16(const std::uint16_t* src, std::int32_t srcStep, std::uint16_t* dst,
                           std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 3>(HWY_DYNAMIC_DISPATCH(intoC3U16), unaligned(src), srcStep, unaligned(dst),
                          dstStep, w, h);
}

Status channelToPlaneC3U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<3, 1>(HWY_DYNAMIC_DISPATCH(fromC3U8), unaligned(src), srcStep, unaligned(dst),
                          dstStep, w, h);
}

Status unalignedChannelToPlaneC3U16(const Unaligned<std::uint16_t>* src, std::int32_t srcStep,
                                    std::uint16_t* dst, std::int32_t dstStep, std::int32_t w,
                                    std::int32_t h) noexcept {
    return moveRows<3, 1>(HWY_DYNAMIC_DISPATCH(fromC3U16), src, srcStep, unaligned(dst), dstStep, w,
                          h);
}

Status planeToChannelC4U8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst,
                          std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept {
    return moveRows<1, 4>(HWY_DYNAMIC_DISPATCH(intoC4U8), unaligned(src), srcStep, unaligned(dst),
                          dstStep, w, h);
}

Status setChannelC4U8(std::uint8_t value, std::uint8_t* dst, std::int32_t dstStep, std::int32_t w,
                      std::int32_t h) noexcept {
    if (const Status status = checkArguments({dst}, {w, h}, {dstStep})) {
        return status;
    }
    const Extent extent = joinAdjacentRows(w, h, {{dstStep, 4}});
    for (std::size_t y = 0; y < extent.rows; ++y) {
        HWY_DYNAMIC_DISPATCH(fillC4U8)(value, rowAt(dst, dstStep, y), extent.columns);
    }
    return kOk;
}

} // namespace vel
#endif
