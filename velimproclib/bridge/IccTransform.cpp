#include "velimproclib/bridge/IccTransform.h"

#include "velimproclib/bridge/ColourTransform.h"
#include "velimproclib/bridge/DisplayImage.h"
#include "velimproclib/bridge/displayRows.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vel {
namespace {

constexpr int32_t kNoTransform = 0;

void transformDisplay(const ColourTransform& transform, std::uint8_t* pixels, int32_t step,
                      int32_t width, int32_t height) {
    const auto rowOf = [&](int32_t y) { return rowAt(pixels, step, static_cast<std::size_t>(y)); };
    const auto count = static_cast<std::size_t>(std::max(width, int32_t{0}));
    transformRows<std::uint8_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint8_t>& in) { packRgbRow(rowOf(y), in.data(), count); },
        [&](int32_t y, const std::vector<std::uint8_t>& out) {
            unpackRgbRow(out.data(), rowOf(y), count);
        });
}

} // namespace

int32_t iccTransformDisplayRows(const PSProfilesRecord& profiles, void* dst, int32_t dstStep,
                                int32_t width, int32_t height) {
    const auto [status, transform] = createTransform(profiles, TYPE_RGB_8, kNoTransform);
    if (transform) {
        transformDisplay(transform, static_cast<std::uint8_t*>(dst), dstStep, width, height);
    }
    return status;
}

int32_t displayImageWithProfiles(const PSProfilesRecord* profiles, const PlaneRecord* image,
                                 void* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight,
                                 float scale) noexcept {
    const int32_t displayed = displayImage(image, dst, dstStep, dstWidth, dstHeight, scale);
    if (displayed != VELORN_OK || profiles == nullptr) {
        return displayed;
    }
    try {
        return iccTransformDisplayRows(*profiles, dst, dstStep, dstWidth, dstHeight);
    } catch (...) {
        return VELORN_COLOUR_FAILURE;
    }
}

} // namespace vel
