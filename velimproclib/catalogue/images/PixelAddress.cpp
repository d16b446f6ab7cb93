#include "velimproclib/catalogue/images/PixelAddress.h"

#include "velorncore10.h"

#include <cstddef>

namespace vel {
namespace {

/// Bytes per pixel; 0 for an invalid format.
std::int32_t bytesPerPixel(std::int32_t format) noexcept {
    switch (format) {
    case psC1U8:
        return 1;
    case psC1U16:
        return 2;
    default:
        return psBytesPerPixelColor(format);
    }
}

} // namespace

const std::uint8_t* psPixelAddress(std::int32_t format, const void* base, std::int32_t step,
                                   std::int32_t x, std::int32_t y) noexcept {
    const std::int32_t pixelBytes = bytesPerPixel(format);
    if (pixelBytes == 0) {
        return nullptr;
    }
    const std::int64_t offset = std::int64_t{step} * y + std::int64_t{x} * pixelBytes;
    return static_cast<const std::uint8_t*>(base) + static_cast<std::ptrdiff_t>(offset);
}

std::uint8_t* psPixelAddress(std::int32_t format, void* base, std::int32_t step, std::int32_t x,
                             std::int32_t y) noexcept {
    return const_cast<std::uint8_t*>(
        psPixelAddress(format, static_cast<const void*>(base), step, x, y));
}

std::int32_t psBytesPerPixelColor(std::int32_t format) noexcept {
    switch (format) {
    case psC3U8:
        return 3;
    case psC3U16:
        return 6;
    case psC4U8:
        return 4;
    case psC4U16:
        return 8;
    default:
        return 0;
    }
}

} // namespace vel
