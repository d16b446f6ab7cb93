#pragma once

#include "velimproclib/primitives/fft/RealFft2D.h"

#include <cstddef>

/// The rows that the transform takes at a time, as a plane of their own in scratch memory.
namespace vel {

inline constexpr int kGroupRows = RealFft2D::kLanes;

/// Floats that the rows of a group fill.
inline std::size_t groupFloats(const RealFft2D& fft) noexcept {
    return kGroupRows * static_cast<std::size_t>(fft.width());
}

/// Bytes from a row to the next.
inline std::ptrdiff_t groupRowBytes(const RealFft2D& fft) noexcept {
    return static_cast<std::ptrdiff_t>(sizeof(float)) * fft.width();
}

} // namespace vel
