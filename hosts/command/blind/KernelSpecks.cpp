#include "hosts/command/blind/KernelSpecks.h"

#include <algorithm>

namespace velorn {
namespace {

/// Weights below this share of the largest one are noise.
constexpr float kFaint = 0.2f;
/// A patch with less than this share of the heaviest patch's mass is a speck.
constexpr double kLight = 0.1;

/// The connected patches of the weights that are not 0. Weights that touch at a corner are
/// connected.
class Patches {
public:
    explicit Patches(const BlurKernel& kernel)
        : m_kernel(kernel), m_numbers(kernel.weights.size(), kNone) {
        for (std::size_t i = 0; i < m_numbers.size(); ++i) {
            if (kernel.weights[i] != 0.0f && m_numbers[i] == kNone) {
                m_masses.push_back(0.0);
                spreadFrom(i);
            }
        }
    }

    /// The mass of the patch that contains weight `i`; 0 if the weight is 0.
    double massAt(std::size_t i) const {
        return m_numbers[i] == kNone ? 0.0 : m_masses[static_cast<std::size_t>(m_numbers[i])];
    }
    double largestMass() const { return m_masses.empty() ? 0.0 : std::ranges::max(m_masses); }

private:
    static constexpr int kNone = -1;

    /// Gives the last number to the whole patch that contains weight `start`.
    void spreadFrom(std::size_t start) {
        const int number = static_cast<int>(m_masses.size()) - 1;
        m_numbers[start] = number;
        std::vector<std::size_t> open{start};
        while (!open.empty()) {
            const std::size_t place = open.back();
            open.pop_back();
            m_masses.back() += static_cast<double>(m_kernel.weights[place]);
            const int row = static_cast<int>(place) / m_kernel.width;
            const int column = static_cast<int>(place) % m_kernel.width;
            for (int r = std::max(row - 1, 0); r <= std::min(row + 1, m_kernel.height - 1); ++r) {
                for (int c = std::max(column - 1, 0); c <= std::min(column + 1, m_kernel.width - 1);
                     ++c) {
                    const auto next = static_cast<std::size_t>(r * m_kernel.width + c);
                    if (m_kernel.weights[next] != 0.0f && m_numbers[next] == kNone) {
                        m_numbers[next] = number;
                        open.push_back(next);
                    }
                }
            }
        }
    }

    const BlurKernel& m_kernel;
    std::vector<int> m_numbers;
    std::vector<double> m_masses;
};

} // namespace

BlurKernel withoutSpecks(const BlurKernel& kernel) {
    BlurKernel strong = kernel;
    const float faint = kFaint * std::ranges::max(kernel.weights);
    for (float& weight : strong.weights) {
        weight = weight < faint ? 0.0f : weight;
    }
    const Patches patches(strong);
    const double light = kLight * patches.largestMass();
    BlurKernel kept = strong;
    for (std::size_t i = 0; i < kept.weights.size(); ++i) {
        if (patches.massAt(i) < light) {
            kept.weights[i] = 0.0f;
        }
    }
    return checkedKernel(std::move(kept), "the estimate");
}

} // namespace velorn
