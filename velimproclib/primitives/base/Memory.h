#pragma once

#include <cstdint>

/// Aligned blocks for planes and images.
///
/// Every block starts at a multiple of 32 bytes, is not initialised, belongs to the caller and is
/// returned with `alignedFree` only. Nothing throws: memory that is not there is a null pointer.
/// Sizes multiply in 64 bits; a block that the address space cannot hold counts as memory that is
/// not there.
namespace vel {

/// `count` floats; null for a count below 1.
float* alignedAllocF32(std::int32_t count) noexcept;

/// `height` rows of `rowBytes` bytes. `step` receives `rowBytes` rounded up to a multiple of 32,
/// and the block holds `step * height` bytes. Null and a step of 0 when a size is below 1 or the
/// step is beyond 32 bits; null with the step set when the heap has no such block.
unsigned char* imageAlloc(std::int32_t rowBytes, std::int32_t height, std::int32_t* step) noexcept;

/// Frees a block of any of the above; a null pointer is ignored.
void alignedFree(void* block) noexcept;

} // namespace vel
