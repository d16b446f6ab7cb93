#pragma once

#include <cstdint>

/// Aligned blocks for planes and images.
///
/// Every block starts at a multiple of 32 bytes and is not initialised. It belongs to the caller,
/// who frees it with `alignedFree`. Nothing throws: the result is null when memory is exhausted or
/// the address space cannot hold the block. Sizes multiply in 64 bits.
namespace vel {

/// Allocates `count` floats. Null for a count below 1.
float* alignedAllocF32(std::int32_t count) noexcept;

/// Allocates `height` rows. `step` receives `rowBytes` rounded up to a multiple of 32, and the
/// block holds `step * height` bytes. Null with a step of 0 when a size is below 1 or the step
/// exceeds 32 bits; null with the step set when memory is exhausted.
unsigned char* imageAlloc(std::int32_t rowBytes, std::int32_t height, std::int32_t* step) noexcept;

/// Frees a block of either function; ignores null.
void alignedFree(void* block) noexcept;

} // namespace vel
