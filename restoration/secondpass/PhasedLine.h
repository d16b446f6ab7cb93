#pragma once

#include <cstddef>

namespace restoration {

/// How the columns of a row of blocks lie in memory. Columns are sorted by their phase, the
/// remainder by the step: columns of neighbouring blocks with the same place inside their block are
/// neighbours in memory, and vectors run across blocks. Behind the columns of a phase, its first
/// `kWrap` columns are repeated: blocks at the right edge of the plane end there.
struct PhasedLine {
    static constexpr std::size_t kWrap = 16;

    std::size_t side = 0;
    std::size_t step = 1;

    std::size_t phaseColumns() const noexcept { return side / step; }
    std::size_t pitch() const noexcept { return phaseColumns() + kWrap; }
    std::size_t floats() const noexcept { return step * pitch(); }
    /// The place of column `x` of the first block.
    std::size_t placeOf(std::size_t x) const noexcept { return x % step * pitch() + x / step; }
};

} // namespace restoration
