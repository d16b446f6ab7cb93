#pragma once

#include <cstdint>

/// Aligned blocks for planes of floats: `imageAlloc` of primitives/base/Memory.h with rows that
/// count floats. `alignedFree` frees them.
namespace vel {

/// Rows of `width` floats; `step` receives bytes.
float* imageAllocF32(std::int32_t width, std::int32_t height, std::int32_t* step) noexcept;

/// Rows of `width` complex numbers, each a real and an imaginary float; `step` receives bytes.
float* imageAllocC32(std::int32_t width, std::int32_t height, std::int32_t* step) noexcept;

} // namespace vel
