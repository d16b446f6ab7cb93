#include "restoration/strength/leastRisk.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <map>

namespace restoration {
namespace {

/// The risks found so far, in the order of their places.
class Risks {
public:
    Risks(int last, const std::function<double(int)>& risk) : m_last(last), m_risk(risk) {}

    double at(int place) {
        const auto found = m_found.find(place);
        return found != m_found.end() ? found->second
                                      : m_found.emplace(place, m_risk(place)).first->second;
    }

    /// The place of the least risk; of equal ones the strongest.
    int best() const {
        return std::ranges::min_element(m_found, {}, &std::pair<const int, double>::second)->first;
    }

    /// Evaluates places down from 0 until the risk rises or the last place is reached.
    void descend() {
        constexpr int kStep = 2 * kPlacesPerOctave;
        int place = 0;
        at(place);
        while (place < m_last) {
            const int next = std::min(place + kStep, m_last);
            const bool isLower = at(next) < at(place);
            place = next;
            if (!isLower) {
                return;
            }
        }
    }

    /// Gives the best place a neighbour on each side where it is the first or the last one.
    void bracket() {
        if (m_found.size() > 1 && best() == m_found.begin()->first) {
            at(std::next(m_found.begin())->first / 2);
        } else if (m_found.size() > 1 && best() == m_last) {
            at((std::prev(m_found.end(), 2)->first + m_last) / 2);
        }
    }

    /// The lowest point of the parabola through the best place and its neighbours, or the best
    /// place where it has one neighbour only.
    int vertex() const {
        const auto middle = m_found.find(best());
        if (middle == m_found.begin() || std::next(middle) == m_found.end()) {
            return middle->first;
        }
        const auto& [left, leftRisk] = *std::prev(middle);
        const auto& [right, rightRisk] = *std::next(middle);
        const double before = middle->first - left;
        const double after = right - middle->first;
        const double fall = leftRisk - middle->second;
        const double rise = rightRisk - middle->second;
        const double curvature = before * rise + after * fall;
        if (!(curvature > 0.0)) {
            return middle->first;
        }
        const double shift = 0.5 * (after * after * fall - before * before * rise) / curvature;
        return middle->first + static_cast<int>(std::lround(std::clamp(shift, -before, after)));
    }

    bool isNew(int place) const {
        constexpr int kNear = kPlacesPerOctave / 4;
        return std::ranges::none_of(
            m_found, [&](const auto& found) { return std::abs(found.first - place) < kNear; });
    }

private:
    int m_last;
    const std::function<double(int)>& m_risk;
    std::map<int, double> m_found;
};

} // namespace

float strengthAt(float strongest, int place) noexcept {
    const double root = std::sqrt(std::sqrt(std::sqrt(std::sqrt(0.5)))); // 2^(-1/16)
    double factor = std::ldexp(1.0, -(place / kPlacesPerOctave));
    for (int i = 0; i < place % kPlacesPerOctave; ++i) {
        factor *= root;
    }
    return static_cast<float>(static_cast<double>(strongest) * factor);
}

int leastRisk(int last, const std::function<double(int place)>& risk) {
    Risks risks(last, risk);
    risks.descend();
    risks.bracket();
    const int vertex = risks.vertex();
    if (risks.isNew(vertex)) {
        risks.at(vertex);
    }
    return risks.vertex();
}

} // namespace restoration
