#include "restoration/blind/search/searchRuns.h"

#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/search/searchBounds.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/squareKernelOf.h"
#include "restoration/failures/Failure.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace restoration {
namespace {

/// Sides of the first runs.
constexpr int kSmallSide = 31;
constexpr int kMiddleSide = 47;
/// Kernels that take more than this share of the middle side may be larger.
constexpr double kFilledShare = 0.75;

struct RunPlan {
    int side = 0;
    RunSettings settings;

    KernelBounds boundsWithin(const KernelBounds& bounds) const {
        return {std::min(side, bounds.width), std::min(side, bounds.height)};
    }
};

std::size_t unitsOf(const RunPlan& plan, const SearchContext& search) {
    const Plane picture = search.parts.croppedFor(plan.side);
    return runUnits(picture.width(), picture.height(), plan.boundsWithin(search.bounds),
                    plan.settings);
}

RunSettings smoothedAs(const FindSettings& wanted, RunSettings settings) {
    settings.smoothing = wanted.smoothing;
    return settings;
}

std::optional<SquareKernel> kernelOf(const RunPlan& plan, std::size_t part,
                                     const SearchContext& search) {
    return runSearch(search.parts.croppedFor(plan.side, part), plan.boundsWithin(search.bounds),
                     smoothedAs(search.settings, plan.settings), search.team.progress(),
                     search.team.cancellation());
}

Candidate scored(const SquareKernel& kernel, const SearchContext& search) {
    Candidate candidate = candidateOf(kernel, search.scorer, search.team.cancellation());
    search.team.progress().advance(search.scoreUnits());
    candidate.evidence.reachesRim = candidate.extent >= kernel.side ? 1.0 : 0.0;
    return candidate;
}

/// Adds to candidates how well they explain the power spectrum of the first part, one by one.
class SpectralScorer {
public:
    explicit SpectralScorer(const SearchContext& search) : m_team(search.team) {
        m_team.run([&] {
            m_spectrum.emplace(search.parts.centre(), search.parts.noiseVariance(),
                               m_team.cancellation());
        });
    }

    void addTo(std::span<Candidate> candidates) {
        m_team.run([&] {
            for (Candidate& candidate : candidates) {
                candidate.evidence.spectralMisfit =
                    m_spectrum->misfit(withSide(candidate.kernel, candidate.extent));
            }
        });
    }

private:
    Team& m_team;
    std::optional<SpectralEvidence> m_spectrum;
};

void requireEdges(const std::vector<Candidate>& candidates) {
    if (candidates.empty()) {
        throw Failure(VELORN_STATUS_NO_KERNEL, "the picture has too few edges to find a kernel");
    }
}

/// Runs the plans side by side and adds the kernels found. The call has come to `until` then.
void addRuns(std::span<const RunPlan> plans, double until, const SearchContext& search,
             SpectralScorer& spectrum, std::vector<Candidate>& candidates) {
    const std::size_t known = candidates.size();
    std::size_t units = 0;
    for (const RunPlan& plan : plans) {
        units += unitsOf(plan, search) + search.scoreUnits();
    }
    search.team.progress().beginPhase(until, units);
    std::vector<std::optional<Candidate>> found(plans.size());
    search.team.forEach(plans.size(), [&](std::size_t piece, int) {
        if (const auto kernel = kernelOf(plans[piece], 0, search)) {
            found[piece] = scored(*kernel, search);
        }
    });
    for (std::optional<Candidate>& candidate : found) {
        if (candidate) {
            candidates.push_back(std::move(*candidate));
        }
    }
    spectrum.addTo(std::span(candidates).subspan(known));
}

std::array<RunPlan, 4> firstPlans(const KernelBounds& bounds) {
    return {{{std::min(kSmallSide, bounds.side()), kPlainRun},
             {std::min(kMiddleSide, bounds.side()), kStrongRun},
             {std::min(kMiddleSide, bounds.side()), kFewEdgesRun},
             {std::min(kMiddleSide, bounds.side()), kWeakEdgesRun}}};
}

/// A run of the size of the best kernel in the picture.
RunPlan planLike(const Candidate& best, const KernelBounds& bounds, const RunSettings& settings) {
    return {std::min(fittingSide(best.extent), bounds.side()), settings};
}

/// Two runs of this size, or a larger one where the first runs have found no end of the kernel.
std::array<RunPlan, 2> laterPlans(const Candidate& best, const KernelBounds& bounds) {
    const int side = bounds.side();
    if (best.extent > kFilledShare * std::min(kMiddleSide, side) && side > kMiddleSide) {
        return {{{std::min(kLargestRunSide, side), kLargeRun}, planLike(best, bounds, kStrongRun)}};
    }
    return {planLike(best, bounds, kStrongestRun), planLike(best, bounds, kStrongRun)};
}

/// The kernels of the parts after the first.
std::vector<SquareKernel> kernelsElsewhere(const RunPlan& plan, const SearchContext& search) {
    const std::size_t count = search.parts.count() - 1;
    search.team.progress().beginPhase(0.75, count * unitsOf(plan, search));
    std::vector<std::optional<SquareKernel>> found(count);
    search.team.forEach(
        count, [&](std::size_t piece, int) { found[piece] = kernelOf(plan, piece + 1, search); });
    std::vector<SquareKernel> kernels;
    for (std::optional<SquareKernel>& kernel : found) {
        if (kernel) {
            kernels.push_back(std::move(*kernel));
        }
    }
    return kernels;
}

} // namespace

RunResults searchRuns(const SearchContext& search) {
    RunResults results;
    SpectralScorer spectrum(search);
    addRuns(firstPlans(search.bounds), 0.5, search, spectrum, results.candidates);
    requireEdges(results.candidates);
    addRuns(laterPlans(bestOf(results.candidates), search.bounds),
            search.parts.count() == 1 ? 0.75 : 0.6, search, spectrum, results.candidates);
    results.elsewhere = kernelsElsewhere(
        planLike(bestOf(results.candidates), search.bounds, kStrongestRun), search);
    return results;
}

RunResults refineStart(const SearchContext& search) {
    const SquareKernel start = squareKernelOf(*search.settings.start, search.bounds.side());
    const Plane picture = search.parts.croppedFor(search.bounds.side());
    const RunSettings settings = smoothedAs(search.settings, kRefiningRun);
    Team& team = search.team;
    team.progress().beginPhase(
        0.75, refinementUnits(picture.width(), picture.height(), search.bounds, settings) +
                  2 * search.scoreUnits());
    RunResults results;
    team.run([&] {
        if (const auto refined = refineKernel(picture, start, search.bounds, settings,
                                              team.progress(), team.cancellation())) {
            results.candidates = {scored(*refined, search), scored(start, search)};
            results.candidates.back().evidence.reachesRim = 0.0; // the start is complete
        }
    });
    requireEdges(results.candidates);
    return results;
}

} // namespace restoration
