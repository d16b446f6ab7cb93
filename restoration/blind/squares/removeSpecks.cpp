#include "restoration/blind/squares/removeSpecks.h"

#include "restoration/blind/squares/scaleToUnitSum.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restoration {
namespace {

constexpr double kLightestPiece = 0.1;

/// The 8-connected pieces of the places above 0.
class Pieces {
public:
    explicit Pieces(const SquareKernel& kernel)
        : m_side(kernel.side), m_labels(kernel.values.size(), kNone) {
        for (std::size_t start = 0; start < m_labels.size(); ++start) {
            if (kernel.values[start] > 0.0 && m_labels[start] == kNone) {
                fill(kernel, start);
            }
        }
    }

    bool isLight(std::size_t place) const {
        return m_labels[place] != kNone &&
               m_masses[m_labels[place]] <
                   kLightestPiece * *std::max_element(m_masses.begin(), m_masses.end());
    }

private:
    static constexpr auto kNone = static_cast<std::size_t>(-1);

    void fill(const SquareKernel& kernel, std::size_t start) {
        const std::size_t label = m_masses.size();
        m_masses.push_back(0.0);
        std::vector<std::size_t> open{start};
        m_labels[start] = label;
        while (!open.empty()) {
            const std::size_t place = open.back();
            open.pop_back();
            m_masses[label] += kernel.values[place];
            const int row = static_cast<int>(place) / m_side;
            const int column = static_cast<int>(place) % m_side;
            for (int y = std::max(row - 1, 0); y <= std::min(row + 1, m_side - 1); ++y) {
                for (int x = std::max(column - 1, 0); x <= std::min(column + 1, m_side - 1); ++x) {
                    const auto next = static_cast<std::size_t>(y * m_side + x);
                    if (kernel.values[next] > 0.0 && m_labels[next] == kNone) {
                        m_labels[next] = label;
                        open.push_back(next);
                    }
                }
            }
        }
    }

    int m_side;
    std::vector<std::size_t> m_labels;
    std::vector<double> m_masses;
};

} // namespace

void removeSpecks(double threshold, SquareKernel& kernel) {
    const double bound = threshold * kernel.largest();
    for (double& value : kernel.values) {
        value = value < bound ? 0.0 : value;
    }
    const Pieces pieces(kernel);
    for (std::size_t place = 0; place < kernel.values.size(); ++place) {
        if (pieces.isLight(place)) {
            kernel.values[place] = 0.0;
        }
    }
    scaleToUnitSum(kernel);
}

} // namespace restoration
