#pragma once

#include <array>
#include <cstddef>

namespace vel {

/// One pixel of one, three or four elements, written out over a run whose length is a multiple of
/// both the pixel and every vector: with it an operation with one constant per channel is a plain
/// operation between two runs of elements.
template <class T>
class RepeatedPixel {
public:
    static constexpr std::size_t kLength = 96;

    RepeatedPixel(const T* pixel, std::size_t elements) {
        for (std::size_t i = 0; i < kLength; ++i) {
            m_run[i] = pixel[i % elements];
        }
    }

    const T* run() const { return m_run.data(); }

private:
    alignas(64) std::array<T, kLength> m_run;
};

} // namespace vel
