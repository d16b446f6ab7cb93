#include "restoration/strength/chooseStrength.h"

#include "restoration/strength/FitProbe.h"
#include "restoration/strength/leastRisk.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace restoration {
namespace {

/// The search for one strength: a probe for each plane of each patch.
class Search {
public:
    Search(std::span<const Patch> patches, std::span<const StrengthPlane> planes,
           const StrengthRange& range, Team& team)
        : m_patches(patches), m_planes(planes), m_range(range), m_team(team),
          m_probes(patches.size() * planes.size()), m_fits(m_probes.size()),
          m_scratch(static_cast<std::size_t>(team.threads())) {
        m_models.reserve(planes.size());
        for (const StrengthPlane& plane : planes) {
            m_models.emplace_back(*plane.blur);
        }
    }

    /// The sum of the planes' risks, weighted by their pixels; 0 without pixels.
    double riskAt(int place) {
        const HyperLaplacian prior{strengthAt(m_range.strongest, place), m_range.alpha};
        m_team.forEach(m_probes.size(), [&](std::size_t i, int worker) {
            ProbeScratch& scratch = scratchOf(worker);
            std::optional<FitProbe>& probe = m_probes[i];
            if (!probe) {
                const std::size_t plane = i % m_planes.size();
                probe.emplace(m_patches[i / m_planes.size()], m_planes[plane].index,
                              m_models[plane], i, scratch, m_team.cancellation());
            }
            m_fits[i] = probe->measure(prior, scratch, m_team.cancellation());
        });
        double risk = 0.0;
        for (std::size_t plane = 0; plane < m_planes.size(); ++plane) {
            risk += planeRisk(plane);
        }
        return risk;
    }

private:
    double planeRisk(std::size_t plane) const {
        Fit sum;
        for (std::size_t i = plane; i < m_fits.size(); i += m_planes.size()) {
            sum.add(m_fits[i]);
        }
        if (sum.pixels == 0) {
            return 0.0;
        }
        return static_cast<double>(sum.pixels) * riskOf(sum, m_planes[plane].noise);
    }

    ProbeScratch& scratchOf(int worker) {
        std::unique_ptr<ProbeScratch>& scratch = m_scratch[static_cast<std::size_t>(worker)];
        if (!scratch) {
            scratch = std::make_unique<ProbeScratch>(m_planes.front().blur->side());
        }
        return *scratch;
    }

    std::span<const Patch> m_patches;
    std::span<const StrengthPlane> m_planes;
    StrengthRange m_range;
    Team& m_team;
    std::vector<FitProbe::Model> m_models;         ///< of each plane
    std::vector<std::optional<FitProbe>> m_probes; ///< patch by patch
    std::vector<Fit> m_fits;
    std::vector<std::unique_ptr<ProbeScratch>> m_scratch;
};

} // namespace

float chooseStrength(std::span<const Patch> patches, std::span<const StrengthPlane> planes,
                     const StrengthRange& range, Team& team) {
    constexpr int kLast = 10 * kPlacesPerOctave;
    Search search(patches, planes, range, team);
    const int place = leastRisk(kLast, [&](int candidate) { return search.riskAt(candidate); });
    return strengthAt(range.strongest, place);
}

} // namespace restoration
