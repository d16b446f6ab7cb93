#include "restoration/noise/DifferenceHistogram.h"

#include "restoration/noise/medianDeviation.h"

#include <algorithm>
#include <numeric>

namespace restoration {
namespace {

template <std::size_t Size>
std::size_t binOf(const std::array<std::uint32_t, Size>&, float position) noexcept {
    return static_cast<std::size_t>(std::min(position + 0.5f, static_cast<float>(Size - 1)));
}

} // namespace

void DifferenceHistogram::count(std::span<const float> differences, std::size_t first,
                                std::size_t stride) noexcept {
    for (std::size_t i = first; i < differences.size(); i += stride) {
        const float difference = differences[i];
        if (difference >= 0.0f) {
            ++m_wide[binOf(m_wide, difference * kWideBins)];
            ++m_narrow[binOf(m_narrow, difference * kNarrowBins)];
            ++m_total;
        }
    }
}

/// Whether the samples were once rounded to coarser steps: most differences are 0, but hardly any
/// are small.
bool DifferenceHistogram::isStepped() const noexcept {
    constexpr std::size_t kQuarterLevel = 16;
    const std::size_t zeros = m_narrow[0];
    const auto small =
        std::accumulate(m_narrow.begin() + 1, m_narrow.begin() + kQuarterLevel, std::size_t{0});
    return zeros < m_total && 10 * small < m_total - zeros;
}

double DifferenceHistogram::deviation(double step) const noexcept {
    // Narrow bins resolve the noise of fine samples below half a level. Elsewhere they would
    // resolve the steps of samples that were rounded to 8 bits at some time.
    constexpr double kNarrowLimit = 0.4;
    const double wide = medianDeviation(m_wide, m_total) / double{kWideBins};
    if (step >= 0.5 || wide >= kNarrowLimit || isStepped()) {
        return wide;
    }
    return medianDeviation(m_narrow, m_total) / double{kNarrowBins};
}

} // namespace restoration
