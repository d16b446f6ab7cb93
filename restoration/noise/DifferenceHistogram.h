#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace restoration {

/// The distribution of the absolute differences of a normal variable with mean 0.
class DifferenceHistogram {
public:
    /// Counts every `stride`th of the differences (in levels of 255), from `first` on. Ignores
    /// negative ones.
    void count(std::span<const float> differences, std::size_t first, std::size_t stride) noexcept;

    /// The standard deviation of the normal variable, from the median of the differences; 0 if
    /// there are none. `step` is the distance of neighbouring differences in levels.
    double deviation(double step) const noexcept;

private:
    /// Bins are centred on the multiples of their width; the first is half as wide.
    static constexpr float kWideBins = 2.0f;    ///< bins per level
    static constexpr float kNarrowBins = 64.0f; ///< bins per level

    bool isStepped() const noexcept;

    std::size_t m_total = 0;
    std::array<std::uint32_t, 512> m_wide{};
    std::array<std::uint32_t, 1024> m_narrow{};
};

} // namespace restoration
