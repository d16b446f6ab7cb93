#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace vel::test {

/// A plane with any row step and start alignment, surrounded by canaries: `intact` checks a pattern
/// in the bytes before the first row, after the last row and in the padding of the rows.
template <class T>
class GuardedPlane {
public:
    /// @param width     elements per row, all channels included
    /// @param extraStep padding of a row in bytes
    /// @param misalign  distance of the first row from a 64-byte boundary in bytes
    GuardedPlane(int width, int height, int extraStep = 0, int misalign = 0)
        : m_width(width), m_height(height),
          m_step(width * static_cast<int>(sizeof(T)) + extraStep) {
        const std::size_t bytes =
            static_cast<std::size_t>(m_step) * static_cast<std::size_t>(height);
        m_bytes.assign(bytes + 3 * kMargin, kCanary);
        auto address = reinterpret_cast<std::uintptr_t>(m_bytes.data()) + kMargin;
        const std::uintptr_t aligned =
            (address + kMargin - 1) & ~static_cast<std::uintptr_t>(kMargin - 1);
        m_start = aligned - reinterpret_cast<std::uintptr_t>(m_bytes.data()) +
                  static_cast<std::size_t>(misalign);
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    int step() const { return m_step; }
    T* data() { return reinterpret_cast<T*>(m_bytes.data() + m_start); }
    const T* data() const { return reinterpret_cast<const T*>(m_bytes.data() + m_start); }

    T at(int x, int y) const {
        T value;
        std::memcpy(&value, address(x, y), sizeof(T));
        return value;
    }
    void set(int x, int y, T value) {
        std::memcpy(const_cast<unsigned char*>(address(x, y)), &value, sizeof(T));
    }

    template <class Generator>
    void fill(Generator&& generate) {
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                set(x, y, static_cast<T>(generate()));
            }
        }
    }

    /// True if nothing but the elements of the rows was written.
    bool intact() const {
        for (std::size_t i = 0; i < m_bytes.size(); ++i) {
            if (!belongsToARow(i) && m_bytes[i] != kCanary) {
                return false;
            }
        }
        return true;
    }

    /// True if all elements have the same bits.
    bool sameBits(const GuardedPlane& other) const {
        for (int y = 0; y < m_height; ++y) {
            if (std::memcmp(address(0, y), other.address(0, y),
                            static_cast<std::size_t>(m_width) * sizeof(T)) != 0) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr std::size_t kMargin = 128;
    static constexpr unsigned char kCanary = 0xA5;

    const unsigned char* address(int x, int y) const {
        return m_bytes.data() + m_start +
               static_cast<std::size_t>(y) * static_cast<std::size_t>(m_step) +
               static_cast<std::size_t>(x) * sizeof(T);
    }
    bool belongsToARow(std::size_t i) const {
        if (i < m_start) {
            return false;
        }
        const std::size_t offset = i - m_start;
        const auto step = static_cast<std::size_t>(m_step);
        return offset / step < static_cast<std::size_t>(m_height) &&
               offset % step < static_cast<std::size_t>(m_width) * sizeof(T);
    }

    int m_width;
    int m_height;
    int m_step;
    std::size_t m_start;
    std::vector<unsigned char> m_bytes;
};

} // namespace vel::test
