#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <cstdint>

/// Sums and products of two float planes into a third. The conventions are those of
/// primitives/arithmetic/PlaneArithmetic.h.
namespace vel {

/// dst = a + b
Status addPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

/// dst = a * b
Status mulPlanesF32(const float* a, std::int32_t aStep, const float* b, std::int32_t bStep,
                    float* dst, std::int32_t dstStep, std::int32_t w, std::int32_t h) noexcept;

} // namespace vel
