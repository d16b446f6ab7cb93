#include "hosts/command/blind/KernelSpecks.h"

#include <algorithm>

namespace velorn {
namespace {

/// Weights below this share of the largest are no part of the blur.
constexpr float kFaint = 0.2f;
/// A patch is a speck when it weighs less than this share of the heaviest patch.
constexpr double kLight = 0.1;

/// A number for every weight: equal ones for weights other than 0 that touch one another, if only
/// by a corner.
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

    /// The mass of the patch that a weight belongs to; 0 for weights of 0.
    double massAt(std::size_t i) const {
        return m_numbers[i] == kNone ? 0.0 : m_masses[static_cast<std::size_t>(m_numbers[i])];
    }
    double largestMass() const { return m_masses.empty() ? 0.0 : std::ranges::max(m_masses); }

private:
    static constexpr int kNone = -1;

    /// Numbers the whole patch around weight `start` with the last number.
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
