#include "velimproclib/catalogue/images/PlaneMemory.h"

#include "velimproclib/primitives/base/Memory.h"
#include "velimproclib/primitives/base/narrowToInt32.h"

namespace vel {
namespace {

/// A row beyond 32 bits narrows to the largest int32, which `imageAlloc` refuses as well.
float* allocateRows(std::int64_t rowBytes, std::int32_t height, std::int32_t* step) noexcept {
    return reinterpret_cast<float*>(imageAlloc(narrowToInt32(rowBytes), height, step));
}

} // namespace

float* imageAllocF32(std::int32_t width, std::int32_t height, std::int32_t* step) noexcept {
    return allocateRows(std::int64_t{width} * 4, height, step);
}

float* imageAllocC32(std::int32_t width, std::int32_t height, std::int32_t* step) noexcept {
    return allocateRows(std::int64_t{width} * 8, height, step);
}

} // namespace vel
