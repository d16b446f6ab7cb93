#include "velimproclib/catalogue/arithmetic/PixelConstants.h"

#include "velimproclib/primitives/base/argumentChecks.h"
#include "velimproclib/primitives/base/rows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>

namespace vel {
namespace {

template <class T, std::size_t N, class Operation>
void combine(T* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
             const std::array<T, N>& constants, Operation&& operation) noexcept {
    for (std::size_t y = 0; y < static_cast<std::size_t>(h); ++y) {
        auto* element = rowAt(unaligned(srcDst), step, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(w); ++x) {
            for (const T constant : constants) {
                element->value = operation(element->value, constant);
                ++element;
            }
        }
    }
}

/// A clamp with the levels of all elements of a pixel.
template <std::size_t N>
void clampAbove(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                const std::array<std::uint16_t, N>& levels) noexcept {
    combine(srcDst, step, w, h, levels,
            [](std::uint16_t v, std::uint16_t level) { return std::min(v, level); });
}

template <class Operation>
Status combineC3F32(const float c[3], float* srcDst, std::int32_t step, std::int32_t w,
                    std::int32_t h, Operation&& operation) noexcept {
    if (const Status status = checkArguments({c, srcDst}, {w, h}, {step})) {
        return status;
    }
    combine(srcDst, step, w, h, std::array{c[0], c[1], c[2]}, operation);
    return kOk;
}

} // namespace

Status addConstInPlaceC3F32(const float c[3], float* srcDst, std::int32_t step, std::int32_t w,
                            std::int32_t h) noexcept {
    return combineC3F32(c, srcDst, step, w, h, std::plus<float>());
}

Status mulConstInPlaceC3F32(const float c[3], float* srcDst, std::int32_t step, std::int32_t w,
                            std::int32_t h) noexcept {
    return combineC3F32(c, srcDst, step, w, h, std::multiplies<float>());
}

Status clampAboveU16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                     std::uint16_t level) noexcept {
    if (const Status status = checkArguments({srcDst}, {w, h}, {step})) {
        return status;
    }
    clampAbove(srcDst, step, w, h, std::array{level});
    return kOk;
}

Status clampAboveC3U16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                       const std::uint16_t level[3]) noexcept {
    if (const Status status = checkArguments({srcDst, level}, {w, h}, {step})) {
        return status;
    }
    clampAbove(srcDst, step, w, h, std::array{level[0], level[1], level[2]});
    return kOk;
}

Status clampAboveC4U16(std::uint16_t* srcDst, std::int32_t step, std::int32_t w, std::int32_t h,
                       const std::uint16_t level[3]) noexcept {
    if (const Status status = checkArguments({srcDst, level}, {w, h}, {step})) {
        return status;
    }
    constexpr std::uint16_t kUnbounded = 65535;
    clampAbove(srcDst, step, w, h, std::array{kUnbounded, level[0], level[1], level[2]});
    return kOk;
}

} // namespace vel
