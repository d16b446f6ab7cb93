#pragma once

#include "restoration/kernels/Kernel.h"

#include <vector>

namespace restoration {

/// How dark the neighbours of a white pixel can be in a blurred picture whose light nowhere exceeds
/// white.
///
/// Let y = k * x with a kernel k of sum 1 and 0 <= x <= 1. If y(p) >= 1 - tolerance, x is almost 1
/// wherever the kernel at p reaches: x(p - j) = 1 - a(j) with sum of k(j) a(j) <= tolerance. The
/// kernel at p + d reaches the same pixels with the weights k(j + d), hence
///
///     y(p + d) >= sum over j of k(j + d) - sum of k(j + d) a(j),
///
/// where j runs over the kernel's support. The least value of the right side over all a with
/// 0 <= a <= 1 is a fractional knapsack: a = 1 in the order of falling k(j + d) / k(j). A neighbour
/// below it proves that p hides light above white.
class WhiteNeighbours {
public:
    struct Neighbour {
        int x;
        int y;
        float least; ///< of the neighbour's value, 0..1
    };

    /// @param kernel     its values are at least 0; smaller ones count as 0
    /// @param tolerance  at least 0
    /// @throws std::bad_alloc
    WhiteNeighbours(const Kernel& kernel, float tolerance);

    /// The neighbours at a distance of at most the root of 5 that have a limit above 0.
    const std::vector<Neighbour>& neighbours() const noexcept { return m_neighbours; }

private:
    std::vector<Neighbour> m_neighbours;
};

} // namespace restoration
