#include "restoration/noise/BlockGrid.h"

#include "restoration/noise/medianDeviation.h"

#include <algorithm>

namespace restoration {
namespace {

constexpr std::size_t kFewestSquares = 500;
/// The corners of compressed photographs exceed the median of all places by factors from 1.5
/// upwards (quality 95 and lower); those of uncompressed ones by at most 1.12.
constexpr double kLeastRatio = 1.3;

} // namespace

void BlockGrid::count(int y, std::span<const float> differences) noexcept {
    const std::size_t row = static_cast<std::size_t>(y % kSide) * kSide;
    for (std::size_t x = 0; x < differences.size(); ++x) {
        if (differences[x] >= 0.0f) {
            const std::size_t place = row + x % kSide;
            const float bin = std::min(differences[x] * kBinsPerLevel + 0.5f, 255.0f);
            ++m_bins[place][static_cast<std::size_t>(bin)];
            ++m_totals[place];
        }
    }
}

std::optional<BlockGrid::Place> BlockGrid::corners() const noexcept {
    std::array<double, kPlaces> deviations{};
    for (std::size_t place = 0; place < kPlaces; ++place) {
        if (m_totals[place] < kFewestSquares) {
            return std::nullopt;
        }
        deviations[place] = medianDeviation(m_bins[place], m_totals[place]);
    }
    const auto largest =
        static_cast<int>(std::ranges::max_element(deviations) - deviations.begin());
    const double most = deviations[static_cast<std::size_t>(largest)];
    std::ranges::nth_element(deviations, deviations.begin() + kPlaces / 2);
    if (!(most > kLeastRatio * deviations[kPlaces / 2])) {
        return std::nullopt;
    }
    return Place{largest / kSide, largest % kSide};
}

} // namespace restoration
