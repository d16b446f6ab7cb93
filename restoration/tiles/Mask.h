#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace restoration {

/// Which pixels of a tile are known: 1 known, 0 unknown; rows without padding.
class Mask {
public:
    Mask() = default;
    /// All pixels unknown.
    /// @throws std::bad_alloc
    Mask(int width, int height)
        : m_width(width),
          m_known(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0) {}

    std::uint8_t* row(int y) noexcept { return m_known.data() + offset(y); }
    const std::uint8_t* row(int y) const noexcept { return m_known.data() + offset(y); }

private:
    std::size_t offset(int y) const noexcept {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
    }

    int m_width = 0;
    std::vector<std::uint8_t> m_known;
};

} // namespace restoration
