#include "velimproclib/bridge/displayRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/bridge/displayRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/primitives/base/unalignedVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR
namespace hn = hwy::HWY_NAMESPACE;
#endif

constexpr int kScaleShift = 7;
constexpr std::uint8_t kOpaque = 255;

std::uint8_t displayLevel(std::uint8_t element) {
    return element;
}

std::uint8_t displayLevel(std::uint16_t element) {
    const unsigned level = element >> kScaleShift;
    return static_cast<std::uint8_t>(level < 255 ? level : 255);
}

/// Plain loop over the pixels from `begin` on.
template <class Element>
void displayFrom(std::size_t begin, const Unaligned<Element>* HWY_RESTRICT rgb,
                 std::uint8_t* HWY_RESTRICT bgra, std::size_t pixels) {
    for (std::size_t x = begin; x < pixels; ++x) {
        bgra[4 * x] = displayLevel(rgb[3 * x + 2].value);
        bgra[4 * x + 1] = displayLevel(rgb[3 * x + 1].value);
        bgra[4 * x + 2] = displayLevel(rgb[3 * x].value);
        bgra[4 * x + 3] = kOpaque;
    }
}

#if HWY_TARGET != HWY_SCALAR
/// Converts whole vectors and returns the number of pixels done. The interleaved loads and stores
/// accept any address.
template <class Element>
std::size_t displayVectors(const Unaligned<Element>* HWY_RESTRICT rgb,
                           std::uint8_t* HWY_RESTRICT bgra, std::size_t pixels) {
    const hn::ScalableTag<Element> d;
    const hn::Rebind<std::uint8_t, decltype(d)> bytes;
    const auto levels = [&](auto elements) HWY_ATTR {
        if constexpr (sizeof(Element) == 1) {
            return elements;
        } else {
            const hn::RebindToSigned<decltype(d)> integers;
            return hn::DemoteTo(bytes,
                                hn::BitCast(integers, hn::ShiftRight<kScaleShift>(elements)));
        }
    };
    const auto opaque = hn::Set(bytes, kOpaque);
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) {
        hn::Vec<decltype(d)> red, green, blue;
        loadInterleaved3Unaligned(d, rgb + 3 * x, red, green, blue);
        hn::StoreInterleaved4(levels(blue), levels(green), levels(red), opaque, bytes,
                              bgra + 4 * x);
    }
    return x;
}
#else
template <class Element>
std::size_t displayVectors(const Unaligned<Element>*, std::uint8_t*, std::size_t) {
    return 0;
}
#endif

template <class Element>
void extractColour(const Unaligned<Element>* HWY_RESTRICT rgb, int colour,
                   std::uint8_t* HWY_RESTRICT plane, std::size_t pixels) {
    const auto* const elements = rgb + colour;
    for (std::size_t x = 0; x < pixels; ++x) {
        plane[x] = displayLevel(elements[3 * x].value);
    }
}

} // namespace

void displayPixelsU8(const Unaligned<std::uint8_t>* rgb, std::uint8_t* bgra, std::size_t pixels) {
    displayFrom(displayVectors(rgb, bgra, pixels), rgb, bgra, pixels);
}
void displayPixelsU16(const Unaligned<std::uint16_t>* rgb, std::uint8_t* bgra, std::size_t pixels) {
    displayFrom(displayVectors(rgb, bgra, pixels), rgb, bgra, pixels);
}
void colourBytesU8(const Unaligned<std::uint8_t>* rgb, int colour, std::uint8_t* plane,
                   std::size_t pixels) {
    extractColour(rgb, colour, plane, pixels);
}
void colourBytesU16(const Unaligned<std::uint16_t>* rgb, int colour, std::uint8_t* plane,
                    std::size_t pixels) {
    extractColour(rgb, colour, plane, pixels);
}
void packPixels(const std::uint8_t* HWY_RESTRICT bgra, std::uint8_t* HWY_RESTRICT rgb,
                std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        rgb[3 * x] = bgra[4 * x + 2];
        rgb[3 * x + 1] = bgra[4 * x + 1];
        rgb[3 * x + 2] = bgra[4 * x];
    }
}
void unpackPixels(const std::uint8_t* HWY_RESTRICT rgb, std::uint8_t* HWY_RESTRICT bgra,
                  std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        bgra[4 * x] = rgb[3 * x + 2];
        bgra[4 * x + 1] = rgb[3 * x + 1];
        bgra[4 * x + 2] = rgb[3 * x];
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(displayPixelsU8);
HWY_EXPORT(displayPixelsU16);
HWY_EXPORT(colourBytesU8);
HWY_EXPORT(colourBytesU16);
HWY_EXPORT(packPixels);
HWY_EXPORT(unpackPixels);

void displayRow(const Unaligned<std::uint8_t>* rgb, std::uint8_t* bgra,
                std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(displayPixelsU8)(rgb, bgra, pixels);
}

void displayRow(const Unaligned<std::uint16_t>* rgb, std::uint8_t* bgra,
                std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(displayPixelsU16)(rgb, bgra, pixels);
}

void colourRow(const Unaligned<std::uint8_t>* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(colourBytesU8)(rgb, colour, plane, pixels);
}

void colourRow(const Unaligned<std::uint16_t>* rgb, int colour, std::uint8_t* plane,
               std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(colourBytesU16)(rgb, colour, plane, pixels);
}

void packRgbRow(const std::uint8_t* bgra, std::uint8_t* rgb, std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(packPixels)(bgra, rgb, pixels);
}

void unpackRgbRow(const std::uint8_t* rgb, std::uint8_t* bgra, std::size_t pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(unpackPixels)(rgb, bgra, pixels);
}

} // namespace vel
#endif
