#include "velimproclib/catalogue/images/TileConverters.h"

#include "velimproclib/catalogue/arithmetic/PixelConstants.h"
#include "velimproclib/catalogue/images/ImagePlanes.h"
#include "velimproclib/catalogue/images/PixelAddress.h"
#include "velimproclib/catalogue/images/replicateBorder.h"
#include "velimproclib/catalogue/pixels/ColorConversions.h"
#include "velimproclib/catalogue/pixels/FurtherChannelMoves.h"
#include "velimproclib/images/FormatCodes.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/arithmetic/ScaledU16.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"
#include "velimproclib/primitives/pixels/Conversions.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vel {
namespace {

constexpr std::int32_t kDone = 1;
constexpr std::int32_t kRefused = 0;
constexpr std::int32_t kPlanesEnsured = 3;

/// The offset added to a host value, in levels.
constexpr float kOffsetLevels = 0.49f;
constexpr std::uint16_t kWhiteOf15Bits = 32768;
constexpr std::uint16_t kWhitePixelOf15Bits[3] = {kWhiteOf15Bits, kWhiteOf15Bits, kWhiteOf15Bits};

/// The scale of a host element and the primitives that move it. The scratch images between
/// four-channel pixels and three colours are signed for 16 bits: bit patterns are copied unchanged.
template <class Element>
struct Host;

template <>
struct Host<std::uint8_t> {
    static constexpr float kLevel = 0.00390625f;
    static constexpr float kLevels = 256.0f;
    static constexpr auto widen = convertU8toF32;
    static constexpr auto widenC3 = convertU8toF32C3;
    static constexpr auto narrow = convertF32toU8;
    static constexpr auto narrowC3 = convertF32toU8C3;
    static constexpr auto takeC3 = channelToPlaneC3U8;
    static constexpr auto takeC4 = channelToPlaneC4U8;
    static constexpr auto putC3 = planeToChannelC3U8;
    static constexpr auto putC4 = planeToChannelC4U8;
    static constexpr auto planeToPixels = imgPlaneToChannelU8;
    static constexpr auto pixelsToPlane = imgChannelToPlaneU8;
    static constexpr auto widenPixels = imgConvertC3U8toF32;
    using Plane = GIMG<unsigned char>;
    using PixelsPlane = IMG<unsigned char, 1>;
    using Pixels = IMG3<unsigned char>;
};

template <>
struct Host<std::uint16_t> {
    static constexpr float kLevel = 3.0517578125e-05f;
    static constexpr float kLevels = 32768.0f;
    static constexpr auto widen = convertU16toF32;
    static constexpr auto widenC3 = convertU16toF32C3;
    static constexpr auto narrow = convertF32toU16;
    static constexpr auto narrowC3 = convertF32toU16C3;
    static constexpr auto takeC3 = channelToPlaneC3U16;
    static constexpr auto takeC4 = channelToPlaneC4U16;
    static constexpr auto putC3 = planeToChannelC3U16;
    static constexpr auto putC4 = planeToChannelC4U16;
    static constexpr auto planeToPixels = imgPlaneToChannelS16;
    static constexpr auto pixelsToPlane = imgChannelToPlaneS16;
    using Plane = GIMG<unsigned short>;
    using PixelsPlane = IMG<short, 1>;
    using Pixels = IMG3<short>;

    static void widenPixels(const Pixels& src, IMG<float, 3>& dst) {
        dst.m_status =
            convertU16toF32C3(reinterpret_cast<const std::uint16_t*>(src.pixels()), src.m_step,
                              dst.pixels(), dst.m_step, dst.m_roiW, dst.m_roiH);
    }
};

/// Calls `work` with an element of the format's type.
template <class Work>
void withElementOf(std::int32_t format, Work&& work) {
    if (psBytesPerChannel(format) == 1) {
        work(std::uint8_t{});
    } else {
        work(std::uint16_t{});
    }
}

bool isGrey(std::int32_t format) {
    return psChannels(format) == 1;
}

bool isColour(std::int32_t format) {
    return psChannels(format) == 3;
}

bool hasAlpha(std::int32_t format) {
    return format == psC4U8 || format == psC4U16;
}

bool isColourWithoutAlpha(std::int32_t format) {
    return isColour(format) && !hasAlpha(format);
}

/// The first colour of a pixel.
template <class Element>
const Element* firstColour(std::int32_t format, const void* pixel) {
    return static_cast<const Element*>(pixel) + (hasAlpha(format) ? 1 : 0);
}

/// The elements of a scratch image as the type of the primitives.
template <class Element, class Image>
Element* elementsOf(Image& img) {
    return reinterpret_cast<Element*>(img.pixels());
}

/// Columns or rows.
struct Sides {
    std::int32_t columns;
    std::int32_t rows;
};

/// The part of a tile's side beyond the image; at most the whole side.
std::int32_t overhang(std::int32_t tileSide, std::int32_t imageSide, std::int32_t start) {
    const std::int64_t beyond = std::int64_t{tileSide} - imageSide + start;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(beyond, 0, std::max(tileSide, std::int32_t{0})));
}

template <class Image>
Sides sizeOf(const Image& img) {
    return {img.m_width, img.m_height};
}

template <class Image>
Sides overhangOf(const Image& img, std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                 std::int32_t y) {
    return {overhang(img.m_width, imageW, x), overhang(img.m_height, imageH, y)};
}

Sides without(Sides whole, Sides part) {
    return {whole.columns - part.columns, whole.rows - part.rows};
}

void multiply(float factor, IMG<float, 1>& img) {
    img.m_status = mulConstInPlaceF32(factor, img.pixels(), img.m_step, img.m_roiW, img.m_roiH);
}

void multiply(float factor, IMG<float, 3>& img) {
    const float factors[3] = {factor, factor, factor};
    img.m_status = mulConstInPlaceC3F32(factors, img.pixels(), img.m_step, img.m_roiW, img.m_roiH);
}

void add(float constant, IMG<float, 1>& img) {
    img.m_status = addConstInPlaceF32(constant, img.pixels(), img.m_step, img.m_roiW, img.m_roiH);
}

void add(float constant, IMG<float, 3>& img) {
    const float constants[3] = {constant, constant, constant};
    img.m_status =
        addConstInPlaceC3F32(constants, img.pixels(), img.m_step, img.m_roiW, img.m_roiH);
}

/// From host levels to the scale 0 to 1.
template <class Element, class Image>
void scaleDown(Image& img) {
    multiply(Host<Element>::kLevel, img);
}

template <class Element, class Image>
void scaleDownWithOffset(Image& img) {
    constexpr float kLevel = Host<Element>::kLevel;
    scaleDown<Element>(img);
    add(static_cast<float>(static_cast<double>(kLevel) * static_cast<double>(kOffsetLevels)), img);
}

/// The same colours of four-channel pixels, through a plane and an image of three channels.
template <class Element>
void widenFourChannels(const Element* colours, std::int32_t step, IMG<float, 3>& img) {
    typename Host<Element>::PixelsPlane plane(img.m_width, img.m_height);
    typename Host<Element>::Pixels pixels(img.m_width, img.m_height);
    for (std::int32_t c = 0; c < 3; ++c) {
        Host<Element>::takeC4(colours + c, step, elementsOf<Element>(plane), plane.m_step,
                              img.m_width, img.m_height);
        Host<Element>::planeToPixels(c, plane, pixels);
    }
    Host<Element>::widenPixels(pixels, img);
}

/// Host values of `kept` pixels, unscaled, into the three planes.
template <class Element>
void widenPlanes(std::int32_t format, const void* src, std::int32_t step, Sides kept,
                 GIMG<float>* const planes[3]) {
    const auto* const colours = firstColour<Element>(format, src);
    const auto take = hasAlpha(format) ? Host<Element>::takeC4 : Host<Element>::takeC3;
    typename Host<Element>::Plane levels(planes[0]->m_width, planes[0]->m_height);
    for (int c = 0; c < 3; ++c) {
        GIMG<float>& plane = *planes[c];
        take(colours + c, step, levels.pixels(), levels.m_step, kept.columns, kept.rows);
        Host<Element>::widen(levels.pixels(), levels.m_step, plane.pixels(), plane.m_step,
                             kept.columns, kept.rows);
    }
}

/// Repeats the last kept pixel of each kept row over the overhang, then the last kept pixel of each
/// kept column; the corner between them stays.
void repeatIntoOverhang(GIMG<float>& img, Sides beyond) {
    const auto [columns, rows] = without(sizeOf(img), beyond);
    if (columns < 1 || rows < 1) {
        return;
    }
    const auto pixel = [&](std::int32_t x, std::int32_t y) {
        return reinterpret_cast<unsigned char*>(img.row(y)) +
               static_cast<std::ptrdiff_t>(x) * GIMG<float>::kPixelBytes;
    };
    for (std::int32_t y = 0; y < rows; ++y) {
        for (std::int32_t x = columns; x < img.m_width; ++x) {
            std::memcpy(pixel(x, y), pixel(columns - 1, y), GIMG<float>::kPixelBytes);
        }
    }
    const std::size_t keptBytes =
        static_cast<std::size_t>(columns) * static_cast<std::size_t>(GIMG<float>::kPixelBytes);
    for (std::int32_t y = rows; y < img.m_height; ++y) {
        std::memcpy(pixel(0, y), pixel(0, rows - 1), keptBytes);
    }
}

/// Loads the part of a tile inside the image into the three planes, unscaled, and completes each
/// plane by `complete(element, plane, beyond)`, with an element of the format's type and the
/// overhang of the tile.
template <class Complete>
void widenTile(std::int32_t format, const void* base, std::int32_t step, Sides image,
               std::int32_t x, std::int32_t y, GIMG<float>* const planes[3], Complete&& complete) {
    const void* const tile = psPixelAddress(format, base, step, x, y);
    const Sides beyond = overhangOf(*planes[0], image.columns, image.rows, x, y);
    const Sides kept = without(sizeOf(*planes[0]), beyond);
    withElementOf(format, [&](auto element) {
        widenPlanes<decltype(element)>(format, tile, step, kept, planes);
        for (int c = 0; c < 3; ++c) {
            complete(element, *planes[c], beyond);
        }
    });
}

/// To three-channel host pixels, rounded and clamped.
template <class Element>
void narrowPixels(const IMG<float, 3>& img, Element* dst, std::int32_t dstStep) {
    Host<Element>::narrowC3(img.pixels(), img.m_step, dst, dstStep, img.m_width, img.m_height,
                            kToNearestEven);
}

/// To the colours of four-channel host pixels, rounded, through an image of three channels and a
/// plane.
template <class Element>
void narrowFourChannels(const IMG<float, 3>& img, Element* colours, std::int32_t dstStep) {
    typename Host<Element>::Pixels pixels(img.m_width, img.m_height);
    typename Host<Element>::PixelsPlane plane(img.m_width, img.m_height);
    narrowPixels(img, elementsOf<Element>(pixels), pixels.m_step);
    for (std::int32_t c = 0; c < 3; ++c) {
        Host<Element>::pixelsToPlane(c, pixels, plane);
        Host<Element>::putC4(elementsOf<Element>(plane), plane.m_step, colours + c, dstStep,
                             img.m_width, img.m_height);
    }
}

} // namespace

std::int32_t psTileToF32C3Dup(std::int32_t format, const void* base, std::int32_t step,
                              std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                              std::int32_t y, IMG<float, 3>& img) {
    if (!isColourWithoutAlpha(format)) {
        return kRefused;
    }
    const void* const tile = psPixelAddress(format, base, step, x, y);
    const Sides beyond = overhangOf(img, imageW, imageH, x, y);
    const Sides kept = without(sizeOf(img), beyond);
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        Host<Element>::widenC3(static_cast<const Element*>(tile), step, img.pixels(), img.m_step,
                               kept.columns, kept.rows);
        replicateBorderF32C3(img, 0, 0, beyond.columns, beyond.rows);
        scaleDownWithOffset<Element>(img);
    });
    return kDone;
}

std::int32_t psTileToF32C3(std::int32_t format, const void* base, std::int32_t step, std::int32_t x,
                           std::int32_t y, IMG<float, 3>& img) {
    if (!isColour(format)) {
        return kRefused;
    }
    const void* const tile = psPixelAddress(format, base, step, x, y);
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        const auto* const colours = firstColour<Element>(format, tile);
        if (hasAlpha(format)) {
            widenFourChannels(colours, step, img);
        } else {
            Host<Element>::widenC3(colours, step, img.pixels(), img.m_step, img.m_width,
                                   img.m_height);
        }
        scaleDownWithOffset<Element>(img);
    });
    return kDone;
}

std::int32_t psTileToF32Grey(std::int32_t format, const void* src, std::int32_t srcStep,
                             GIMG<float>& img) {
    if (!isGrey(format)) {
        return kRefused;
    }
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        Host<Element>::widen(static_cast<const Element*>(src), srcStep, img.pixels(), img.m_step,
                             img.m_width, img.m_height);
        scaleDownWithOffset<Element>(img);
    });
    return kDone;
}

std::int32_t psTileToF32GreyDup(std::int32_t format, const void* base, std::int32_t step,
                                std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                                std::int32_t y, GIMG<float>& img) {
    if (!isGrey(format)) {
        return kRefused;
    }
    const void* const tile = psPixelAddress(format, base, step, x, y);
    const Sides beyond = overhangOf(img, imageW, imageH, x, y);
    const Sides kept = without(sizeOf(img), beyond);
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        Host<Element>::widen(static_cast<const Element*>(tile), step, img.pixels(), img.m_step,
                             kept.columns, kept.rows);
        scaleDown<Element>(img);
    });
    repeatIntoOverhang(img, beyond);
    return kDone;
}

std::int32_t psTileToPlanes(std::int32_t format, const void* src, std::int32_t srcStep,
                            GIMG<float>* const planes[3]) {
    if (!isColour(format)) {
        return kRefused;
    }
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        widenPlanes<Element>(format, src, srcStep, sizeOf(*planes[0]), planes);
        for (int c = 0; c < 3; ++c) {
            scaleDownWithOffset<Element>(*planes[c]);
        }
    });
    return kDone;
}

std::int32_t psTileToPlanesDup(std::int32_t format, const void* base, std::int32_t step,
                               std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                               std::int32_t y, GIMG<float>* const planes[3]) {
    if (!isColourWithoutAlpha(format)) {
        return kRefused;
    }
    widenTile(format, base, step, {imageW, imageH}, x, y, planes,
              [](auto element, GIMG<float>& plane, Sides beyond) {
                  using Element = decltype(element);
                  replicateBorderF32(plane, 0, 0, beyond.columns, beyond.rows);
                  scaleDownWithOffset<Element>(plane);
              });
    return kDone;
}

std::int32_t psTileToPlanesDupRaw(std::int32_t format, const void* base, std::int32_t step,
                                  std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                                  std::int32_t y, GIMG<float>* const planes[3]) {
    if (!isColour(format)) {
        return kRefused;
    }
    widenTile(format, base, step, {imageW, imageH}, x, y, planes,
              [](auto element, GIMG<float>& plane, Sides beyond) {
                  using Element = decltype(element);
                  scaleDown<Element>(plane);
                  repeatIntoOverhang(plane, beyond);
              });
    return kDone;
}

std::int32_t psTileFromF32C3(IMG<float, 3>& img, std::int32_t format, void* dst,
                             std::int32_t dstStep) {
    if (!isColour(format)) {
        return kRefused;
    }
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        auto* const pixels = static_cast<Element*>(dst);
        multiply(Host<Element>::kLevels, img);
        if (hasAlpha(format)) {
            narrowFourChannels(img, pixels + 1, dstStep);
        } else {
            narrowPixels(img, pixels, dstStep);
        }
        if constexpr (sizeof(Element) == 2) {
            // Four-channel rows are clamped as if they had three channels: hosts expect it.
            clampAboveC3U16(pixels, dstStep, img.m_width, img.m_height, kWhitePixelOf15Bits);
        }
    });
    return kDone;
}

std::int32_t psTileFromPlanes(GIMG<float>* const planes[3], std::int32_t format, void* dst,
                              std::int32_t dstStep) {
    if (!isColour(format)) {
        return kRefused;
    }
    const auto [width, height] = sizeOf(*planes[0]);
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        auto* const pixels = static_cast<Element*>(dst);
        const auto put = hasAlpha(format) ? Host<Element>::putC4 : Host<Element>::putC3;
        typename Host<Element>::Plane levels(width, height);
        for (int c = 0; c < 3; ++c) {
            GIMG<float>& plane = *planes[c];
            multiply(Host<Element>::kLevels, plane);
            Host<Element>::narrow(plane.pixels(), plane.m_step, levels.pixels(), levels.m_step,
                                  width, height, kToNearestEven);
            put(levels.pixels(), levels.m_step, pixels + (hasAlpha(format) ? 1 : 0) + c, dstStep,
                width, height);
        }
        if constexpr (sizeof(Element) == 2) {
            const auto clamp = hasAlpha(format) ? clampAboveC4U16 : clampAboveC3U16;
            clamp(pixels, dstStep, width, height, kWhitePixelOf15Bits);
        }
    });
    return kDone;
}

std::int32_t psGreyFromF32(GIMG<float>& img, std::int32_t format, void* dst, std::int32_t dstStep) {
    if (!isGrey(format)) {
        return kRefused;
    }
    withElementOf(format, [&](auto element) {
        using Element = decltype(element);
        auto* const pixels = static_cast<Element*>(dst);
        multiply(Host<Element>::kLevels, img);
        Host<Element>::narrow(img.pixels(), img.m_step, pixels, dstStep, img.m_width, img.m_height,
                              kToNearestEven);
        if constexpr (sizeof(Element) == 2) {
            clampAboveU16(pixels, dstStep, img.m_width, img.m_height, kWhiteOf15Bits);
        }
    });
    return kDone;
}

std::int32_t psEnsurePlanes(std::int32_t format, const void* base, std::int32_t step, std::int32_t,
                            std::int32_t, std::int32_t x, std::int32_t y, std::int32_t width,
                            std::int32_t height, GIMG<float>* planes[3]) {
    for (int c = 0; c < 3; ++c) {
        const GIMG<float>* const plane = planes[c];
        if (plane == nullptr || plane->m_width != width || plane->m_height != height) {
            delete std::exchange(planes[c], nullptr);
            planes[c] = new GIMG<float>(width, height);
        }
    }
    psTileToPlanes(format, psPixelAddress(format, base, step, x, y), step, planes);
    return kPlanesEnsured;
}

} // namespace vel
