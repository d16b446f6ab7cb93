#pragma once

#include <cstdint>

namespace restoration {

/// Independent random signs, the same for the same seed on every system (SplitMix64: G. L. Steele,
/// D. Lea, C. H. Flood, Fast splittable pseudorandom number generators, 2014).
class RandomSigns {
public:
    explicit RandomSigns(std::uint64_t seed) noexcept : m_state(seed) {}

    /// -1 or 1.
    float next() noexcept {
        if (m_left == 0) {
            m_bits = draw();
            m_left = 64;
        }
        const bool isPositive = (m_bits & 1U) != 0;
        m_bits >>= 1;
        --m_left;
        return isPositive ? 1.0f : -1.0f;
    }

private:
    std::uint64_t draw() noexcept {
        m_state += 0x9e3779b97f4a7c15U;
        std::uint64_t bits = m_state;
        bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9U;
        bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebU;
        return bits ^ (bits >> 31);
    }

    std::uint64_t m_state;
    std::uint64_t m_bits = 0;
    int m_left = 0;
};

} // namespace restoration
