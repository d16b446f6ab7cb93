#include "restoration/blind/parts/excessBlur.h"

#include "restoration/blind/parts/FrequencyCells.h"
#include "restoration/blind/spectra/hannWindow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace restoration {
namespace {

using frequencies::Cells;
using frequencies::forEachFrequency;
using frequencies::kColumns;
using frequencies::kSquare;
using frequencies::Spectrum;

constexpr int kReach = kSquare - 1;
constexpr int kLags = 2 * kReach + 1;
/// Less power is taken for this, relative to all.
constexpr double kLeastPower = 1e-6;

/// The correlation with itself of the window that EdgeSpectrum looks through, 1 at lag 0.
std::array<double, kLags> windowCorrelation() {
    const std::vector<double> window = hannWindow(kSquare);
    std::array<double, kLags> correlation{};
    for (int lag = -kReach; lag <= kReach; ++lag) {
        for (int i = std::max(0, -lag); i < std::min(kSquare, kSquare - lag); ++i) {
            correlation[static_cast<std::size_t>(lag + kReach)] +=
                window[static_cast<std::size_t>(i)] * window[static_cast<std::size_t>(i + lag)];
        }
    }
    const double most = correlation[kReach];
    for (double& value : correlation) {
        value /= most;
    }
    return correlation;
}

/// Squares over all frequencies what windowed white noise has left after a blur by a kernel: the
/// transform of the product of both correlations.
class BlurredPowers {
public:
    explicit BlurredPowers(const SquareKernel& kernel)
        : m_reach(std::min(kernel.side - 1, kReach)), m_side(2 * m_reach + 1),
          m_correlation(static_cast<std::size_t>(m_side) * static_cast<std::size_t>(m_side)) {
        const std::array<double, kLags> window = windowCorrelation();
        for (int down = -m_reach; down <= m_reach; ++down) {
            for (int right = -m_reach; right <= m_reach; ++right) {
                at(down, right) = correlationOf(kernel, down, right) *
                                  window[static_cast<std::size_t>(down + kReach)] *
                                  window[static_cast<std::size_t>(right + kReach)];
            }
        }
        for (int i = 0; i < kSquare; ++i) {
            m_cosines[static_cast<std::size_t>(i)] = std::cos(2.0 * std::numbers::pi * i / kSquare);
        }
    }

    Spectrum spectrum() {
        Spectrum powers{};
        forEachFrequency([&](std::size_t slot, double, double) {
            const int row = static_cast<int>(slot / kColumns);
            const int column = static_cast<int>(slot % kColumns);
            double sum = 0.0;
            for (int down = -m_reach; down <= m_reach; ++down) {
                for (int right = -m_reach; right <= m_reach; ++right) {
                    const int turn = (row * down + column * right) % kSquare;
                    sum += at(down, right) * m_cosines[static_cast<std::size_t>(std::abs(turn))];
                }
            }
            powers[slot] = std::max(sum, kLeastPower);
        });
        return powers;
    }

private:
    static double correlationOf(const SquareKernel& kernel, int down, int right) {
        double sum = 0.0;
        for (int y = std::max(0, -down); y < std::min(kernel.side, kernel.side - down); ++y) {
            for (int x = std::max(0, -right); x < std::min(kernel.side, kernel.side - right); ++x) {
                sum += kernel.at(y, x) * kernel.at(y + down, x + right);
            }
        }
        return sum;
    }

    double& at(int down, int right) {
        return m_correlation[static_cast<std::size_t>((down + m_reach) * m_side + right + m_reach)];
    }

    int m_reach;
    int m_side;
    std::vector<double> m_correlation;
    std::array<double, kSquare> m_cosines{};
};

double meanExcess(const EdgeDirection& edges, const Cells& cells, const Spectrum& powers) {
    const double first = cells[0].meanOf(powers);
    double sum = 0.0;
    int visible = 0;
    for (std::size_t band = 0; band < EdgeDirection::kBands; ++band) {
        if (edges.isVisible[band]) {
            sum += std::log(first / cells[band + 1].meanOf(powers)) - edges.lost[band];
            ++visible;
        }
    }
    return visible == 0 ? 0.0 : sum / visible;
}

} // namespace

double excessBlur(const EdgeSpectrum& edges, const SquareKernel& kernel) {
    const Spectrum powers = BlurredPowers(kernel).spectrum();
    const std::array<Cells, kDirections> cells = frequencies::cellsOfDirections();
    double most = meanExcess(edges.directions[0], cells[0], powers);
    for (std::size_t direction = 1; direction < kDirections; ++direction) {
        most = std::max(most, meanExcess(edges.directions[direction], cells[direction], powers));
    }
    return most;
}

} // namespace restoration
