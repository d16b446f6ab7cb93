#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"

#include <cstddef>
#include <span>

namespace restoration {

/// A plane of floats: rows without padding, the first row 64-byte aligned, 1.0 = white. Movable;
/// copies are explicit.
class Plane {
public:
    Plane() = default;
    /// Content undefined. Sides at least 0.
    /// @throws std::bad_alloc
    Plane(int width, int height) : m_width(width), m_height(height) {
        m_floats.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    }

    int width() const noexcept { return m_width; }
    int height() const noexcept { return m_height; }
    bool isEmpty() const noexcept { return m_floats.size() == 0; }

    float* row(int y) noexcept { return m_floats.data() + offset(y); }
    const float* row(int y) const noexcept { return m_floats.data() + offset(y); }
    std::span<float> values() noexcept { return {m_floats.data(), m_floats.size()}; }
    std::span<const float> values() const noexcept { return {m_floats.data(), m_floats.size()}; }

private:
    std::size_t offset(int y) const noexcept {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
    }

    int m_width = 0;
    int m_height = 0;
    vel::AlignedFloats m_floats;
};

} // namespace restoration
