#include "velimproclib/bridge/DisplayImage.h"

#include "velimproclib/bridge/displayRows.h"
#include "velimproclib/images/FormatCodes.h"
#include "velimproclib/images/Image.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"
#include "velimproclib/primitives/pixels/Resampling.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vel {
namespace {

constexpr std::uint8_t kOpaque = 255;

/// The display buffer of the host.
struct Display {
    std::uint8_t* pixels;
    int32_t step;
    int32_t width;
    int32_t height;
};

/// Row `y` of the image; hosts may place rows of 16-bit elements at odd addresses.
template <class Element>
const Unaligned<Element>* sourceRow(const PlaneRecord& image, int32_t y) noexcept {
    const auto* const first = static_cast<const std::uint8_t*>(image.data);
    return reinterpret_cast<const Unaligned<Element>*>(
        rowAt(first, image.step, static_cast<std::size_t>(y)));
}

template <class Element>
void copyOverlap(const PlaneRecord& image, const Display& display) noexcept {
    const int32_t width = std::min(image.width, display.width);
    const int32_t height = std::min(image.height, display.height);
    if (width < 1) {
        return;
    }
    forEachRow(height, [&](int32_t y) {
        displayRow(sourceRow<Element>(image, y),
                   rowAt(display.pixels, display.step, static_cast<std::size_t>(y)),
                   static_cast<std::size_t>(width));
    });
}

template <class Element>
void extractColour(const PlaneRecord& image, int colour, GIMG<unsigned char>& plane) noexcept {
    if (image.width < 1) {
        return;
    }
    forEachRow(image.height, [&](int32_t y) {
        colourRow(sourceRow<Element>(image, y), colour, plane.row(y),
                  static_cast<std::size_t>(image.width));
    });
}

void clear(GIMG<unsigned char>& plane) noexcept {
    if (plane.m_width > 0 && plane.m_height > 0) {
        std::memset(plane.m_base, 0,
                    static_cast<std::size_t>(plane.m_step) *
                        static_cast<std::size_t>(plane.m_height));
    }
}

template <class Element>
void resample(const PlaneRecord& image, const Display& display, float scale) {
    GIMG<unsigned char> planeIn(image.width, image.height);
    GIMG<unsigned char> planeOut(display.width, display.height);
    // The pixels that the resampled image does not reach are black.
    clear(planeOut);
    const PixelRect whole{0, 0, image.width, image.height};
    for (int colour = 0; colour < 3; ++colour) {
        extractColour<Element>(image, colour, planeIn);
        resizeU8(planeIn.pixels(), image.width, image.height, planeIn.m_step, whole,
                 planeOut.pixels(), planeOut.m_step, planeOut.m_roiW, planeOut.m_roiH, scale, scale,
                 kLinear);
        planeToChannelC4U8(planeOut.pixels(), planeOut.m_step, display.pixels + (2 - colour),
                           display.step, planeOut.m_roiW, planeOut.m_roiH);
    }
    setChannelC4U8(kOpaque, display.pixels + 3, display.step, planeOut.m_roiW, planeOut.m_roiH);
}

template <class Element>
void show(const PlaneRecord& image, const Display& display, float scale) {
    // The bounds are doubles, therefore the floats 0.99 and 1.01 take the direct path. So does NaN.
    if (scale > 1.01 || scale < 0.99) {
        resample<Element>(image, display, scale);
    } else {
        copyOverlap<Element>(image, display);
    }
}

bool lacksPixels(const PlaneRecord& image) noexcept {
    return image.data == nullptr && image.width > 0 && image.height > 0;
}

} // namespace

int32_t displayImage(const PlaneRecord* image, void* dst, int32_t dstStep, int32_t dstWidth,
                     int32_t dstHeight, float scale) noexcept {
    if (image == nullptr || psChannels(image->format) != 3 || lacksPixels(*image) ||
        dst == nullptr) {
        return VELORN_BAD_ARGUMENT;
    }
    const Display display{static_cast<std::uint8_t*>(dst), dstStep, dstWidth, dstHeight};
    try {
        if (psBytesPerChannel(image->format) == 1) {
            show<std::uint8_t>(*image, display, scale);
        } else {
            show<std::uint16_t>(*image, display, scale);
        }
    } catch (...) {
        return VELORN_DISPLAY_FAILURE;
    }
    return VELORN_OK;
}

} // namespace vel
