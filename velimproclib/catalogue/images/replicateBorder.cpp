#include "velimproclib/catalogue/images/replicateBorder.h"

#include <cstddef>
#include <cstring>

namespace vel {
namespace {

bool isMargin(std::int32_t margin, std::int32_t side) noexcept {
    return margin > 0 && margin < side;
}

/// Copies row `from` to the `count` rows from `first` on.
template <int N>
void repeatRow(IMG<float, N>& img, std::int32_t from, std::int32_t first,
               std::int32_t count) noexcept {
    const std::size_t bytes = static_cast<std::size_t>(img.m_roiW) * IMG<float, N>::kPixelBytes;
    for (std::int32_t y = first; y < first + count; ++y) {
        std::memcpy(img.row(y), img.row(from), bytes);
    }
}

/// Copies pixel `from` of a row to the `count` pixels from `first` on.
template <int N>
void repeatPixel(float* row, std::int32_t from, std::int32_t first, std::int32_t count) noexcept {
    auto* const bytes = reinterpret_cast<unsigned char*>(row);
    const auto pixel = [&](std::int32_t x) {
        return bytes + static_cast<std::ptrdiff_t>(x) * IMG<float, N>::kPixelBytes;
    };
    for (std::int32_t x = first; x < first + count; ++x) {
        std::memcpy(pixel(x), pixel(from), IMG<float, N>::kPixelBytes);
    }
}

template <int N>
void replicate(IMG<float, N>& img, std::int32_t left, std::int32_t top, std::int32_t right,
               std::int32_t bottom) noexcept {
    const std::int32_t width = img.m_roiW;
    const std::int32_t height = img.m_roiH;
    if (width < 1) {
        return;
    }
    if (isMargin(top, height)) {
        repeatRow(img, top, 0, top);
    }
    if (isMargin(bottom, height)) {
        repeatRow(img, height - bottom - 1, height - bottom, bottom);
    }
    for (std::int32_t y = 0; y < height; ++y) {
        if (isMargin(left, width)) {
            repeatPixel<N>(img.row(y), left, 0, left);
        }
        if (isMargin(right, width)) {
            repeatPixel<N>(img.row(y), width - right - 1, width - right, right);
        }
    }
}

} // namespace

void replicateBorderF32(IMG<float, 1>& img, std::int32_t left, std::int32_t top, std::int32_t right,
                        std::int32_t bottom) noexcept {
    replicate(img, left, top, right, bottom);
}

void replicateBorderF32C3(IMG<float, 3>& img, std::int32_t left, std::int32_t top,
                          std::int32_t right, std::int32_t bottom) noexcept {
    replicate(img, left, top, right, bottom);
}

} // namespace vel
