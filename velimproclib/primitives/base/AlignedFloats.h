#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <new>

namespace vel {

/// A block of floats for vectors and transforms, aligned to at least 64 bytes, not initialised.
class AlignedFloats {
public:
    /// Allocates `count` floats of undefined content. Does nothing when the size is the same.
    /// @throws std::bad_alloc when memory is exhausted; the block is empty then
    void resize(std::size_t count) {
        if (count == m_count) {
            return;
        }
        m_count = 0;
        m_floats.reset();
        if (count == 0) {
            return;
        }
        m_floats = hwy::AllocateAligned<float>(count);
        if (!m_floats) {
            throw std::bad_alloc();
        }
        m_count = count;
    }

    std::size_t size() const noexcept { return m_count; }
    float* data() noexcept { return m_floats.get(); }
    const float* data() const noexcept { return m_floats.get(); }

private:
    hwy::AlignedFreeUniquePtr<float[]> m_floats;
    std::size_t m_count = 0;
};

} // namespace vel
