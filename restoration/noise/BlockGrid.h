#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace restoration {

/// Finds the grid of blocks of 8 by 8 pixels that JPEG compression leaves in a picture.
class BlockGrid {
public:
    static constexpr int kSide = 8;

    /// A place of squares of 2 by 2 pixels in the grid: their upper row and left column, modulo 8.
    struct Place {
        int row = 0;
        int column = 0;
    };

    /// Counts the differences (see SquareRows) of the squares whose upper row is `y`.
    void count(int y, std::span<const float> differences) noexcept;

    /// The place of the squares around the corners of the blocks. Nothing where the differences of
    /// the squares hardly depend on their places, or where there are too few squares to decide.
    std::optional<Place> corners() const noexcept;

private:
    static constexpr std::size_t kPlaces = std::size_t{kSide} * kSide;
    static constexpr float kBinsPerLevel = 2.0f;
    using Bins = std::array<std::uint32_t, 256>;

    std::array<Bins, kPlaces> m_bins{};
    std::array<std::size_t, kPlaces> m_totals{};
};

} // namespace restoration
