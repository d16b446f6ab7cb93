#include "velimproclib/primitives/base/Memory.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace vel {
namespace {

constexpr std::size_t kAlignment = 32;
// Room to align upwards, and for the heap's pointer in the word before the block.
constexpr std::size_t kExtraBytes = kAlignment + sizeof(void*);

void* alignedAlloc(std::uint64_t bytes) noexcept {
    if (bytes >
        static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max()) - kExtraBytes) {
        return nullptr;
    }
    void* heapBlock = std::malloc(static_cast<std::size_t>(bytes) + kExtraBytes);
    if (heapBlock == nullptr) {
        return nullptr;
    }
    const auto heapAddress = reinterpret_cast<std::uintptr_t>(heapBlock);
    const std::uintptr_t address =
        (heapAddress + sizeof(void*) + kAlignment - 1) & ~(kAlignment - 1);
    unsigned char* block = static_cast<unsigned char*>(heapBlock) + (address - heapAddress);
    std::memcpy(block - sizeof(void*), &heapBlock, sizeof(void*));
    return block;
}

} // namespace

float* alignedAllocF32(std::int32_t count) noexcept {
    if (count < 1) {
        return nullptr;
    }
    return static_cast<float*>(alignedAlloc(static_cast<std::uint64_t>(count) * sizeof(float)));
}

unsigned char* imageAlloc(std::int32_t rowBytes, std::int32_t height, std::int32_t* step) noexcept {
    if (step == nullptr) {
        return nullptr;
    }
    *step = 0;
    const std::int64_t padded = (std::int64_t{rowBytes} + 31) & ~std::int64_t{31};
    if (rowBytes < 1 || height < 1 || padded > std::numeric_limits<std::int32_t>::max()) {
        return nullptr;
    }
    *step = static_cast<std::int32_t>(padded);
    return static_cast<unsigned char*>(
        alignedAlloc(static_cast<std::uint64_t>(padded) * static_cast<std::uint64_t>(height)));
}

void alignedFree(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    void* heapBlock;
    std::memcpy(&heapBlock, static_cast<unsigned char*>(block) - sizeof(void*), sizeof(void*));
    std::free(heapBlock);
}

} // namespace vel
