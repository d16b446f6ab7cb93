#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace restoration {

/// The standard deviation of a normal variable with mean 0 whose absolute values are counted in
/// `bins`: those of width 1 that are centred on the whole numbers; the first is half as wide and
/// starts at 0. `total` is the sum of the counts.
///
/// Matches the median. Inside its bin it is interpolated on the scale of the normal distribution,
/// therefore the result is exact for normal variables and bins of any width. 0 without counts.
double medianDeviation(std::span<const std::uint32_t> bins, std::size_t total) noexcept;

} // namespace restoration
