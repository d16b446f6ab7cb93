#pragma once

#include "tests/support/GuardedPlane.h"

#include <cstdint>

namespace vel::test {

/// A guarded plane with a border around the region of a neighbourhood operation. Coordinates start
/// at the first pixel of the region; in the border they are negative or beyond the region.
template <class T>
class BorderedPlane {
public:
    BorderedPlane(int width, int height, int border, int extraStep = 0, int misalign = 0)
        : m_plane(width + 2 * border, height + 2 * border, extraStep, misalign), m_border(border) {}

    int width() const { return m_plane.width() - 2 * m_border; }
    int height() const { return m_plane.height() - 2 * m_border; }
    int step() const { return m_plane.step(); }
    T* data() {
        return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(m_plane.data()) + offset());
    }
    const T* data() const {
        return reinterpret_cast<const T*>(reinterpret_cast<std::uintptr_t>(m_plane.data()) +
                                          offset());
    }
    T at(int x, int y) const { return m_plane.at(x + m_border, y + m_border); }
    void set(int x, int y, T value) { m_plane.set(x + m_border, y + m_border, value); }
    template <class Generator>
    void fill(Generator&& generate) {
        m_plane.fill(generate);
    }
    bool intact() const { return m_plane.intact(); }
    bool sameBits(const BorderedPlane& other) const { return m_plane.sameBits(other.m_plane); }

private:
    std::uintptr_t offset() const {
        return static_cast<std::uintptr_t>(m_border) * static_cast<std::uintptr_t>(step()) +
               static_cast<std::uintptr_t>(m_border) * sizeof(T);
    }

    GuardedPlane<T> m_plane;
    int m_border;
};

} // namespace vel::test
