#include "velimproclib/catalogue/bridge/iccTransformHostRows.h"

#include "velimproclib/bridge/ColourTransform.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vel {
namespace {

constexpr std::uint16_t kMostOf15Bits = 32767;

std::uint8_t* bytesOfRow(std::uint8_t* first, int32_t step, int32_t y) noexcept {
    return rowAt(first, step, static_cast<std::size_t>(y));
}

void transformBytes(const ColourTransform& transform, std::uint8_t* data, int32_t step,
                    int32_t width, int32_t height) {
    transformRows<std::uint8_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint8_t>& in) {
            std::copy_n(bytesOfRow(data, step, y), in.size(), in.data());
        },
        [&](int32_t y, const std::vector<std::uint8_t>& out) {
            std::copy_n(out.data(), out.size(), bytesOfRow(data, step, y));
        });
}

/// Doubles the 15-bit elements to the 16 bits of the transform, and halves the results.
void transform15Bits(const ColourTransform& transform, std::uint8_t* data, int32_t step,
                     int32_t width, int32_t height) {
    transformRows<std::uint16_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint16_t>& in) {
            std::memcpy(in.data(), bytesOfRow(data, step, y), in.size() * sizeof in[0]);
            for (std::uint16_t& element : in) {
                element = static_cast<std::uint16_t>(2 * std::min(element, kMostOf15Bits));
            }
        },
        [&](int32_t y, std::vector<std::uint16_t>& out) {
            for (std::uint16_t& element : out) {
                element = static_cast<std::uint16_t>(element >> 1);
            }
            std::memcpy(bytesOfRow(data, step, y), out.data(), out.size() * sizeof out[0]);
        });
}

} // namespace

int32_t iccTransformHostRows(const PSProfilesRecord& profiles, void* data, bool is8, int32_t step,
                             int32_t width, int32_t height) {
    // Callers rely on the difference: a refused transform is a failure for 8 bits only.
    const auto [status, transform] =
        is8 ? createTransform(profiles, TYPE_RGB_8, 0) : createTransform(profiles, TYPE_RGB_16, 1);
    if (transform) {
        const auto convert = is8 ? transformBytes : transform15Bits;
        convert(transform, static_cast<std::uint8_t*>(data), step, width, height);
    }
    return status;
}

} // namespace vel
