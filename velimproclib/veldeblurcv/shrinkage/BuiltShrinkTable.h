#pragma once

#include <cstdint>
#include <vector>

namespace vel {

/// The shrink function tabulated at run time, for any alpha: Newton's method on a grid of 0.0001
/// from -10 to 10, replaced by 0 where 0 costs no more. It defines the function that the stored
/// table approximates.
class BuiltShrinkTable {
public:
    /// Points of the grid. The arrays have one entry more: entry 0 has abscissa 0 and value 0, and
    /// the grid begins at entry 1.
    static constexpr std::int32_t kLutSize = 200001;

    /// Allocates the grid and the levels 0..`lastLevel`, filled with zeros.
    /// @throws std::bad_alloc
    void allocate(int lastLevel);

    /// Fills all levels for `alpha` in 0..1. beta is 1 at level 0 and is multiplied by `betaRate`
    /// from each level to the next. Where the iteration ends in a NaN the value is 0.
    /// @throws std::bad_alloc
    void build(double alpha, double betaRate, int newtonIters);

    /// shrink(v) at `level`, linear between grid points. Values above the grid extrapolate the last
    /// cell but one. Values below -10 lie on the line from the origin through the first grid point:
    /// entry 0 causes that, on purpose.
    float at(int level, float v) const noexcept;

private:
    std::vector<float> m_lutX;
    std::vector<std::vector<float>> m_lut;
};

} // namespace vel
