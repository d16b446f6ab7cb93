#include "restoration/blind/findKernel.h"

#include "restoration/blind/parts/usablePart.h"
#include "restoration/blind/search/analyticCandidate.h"
#include "restoration/blind/search/compareWithEdges.h"
#include "restoration/blind/search/foundKernels.h"
#include "restoration/blind/search/judgeSharpness.h"
#include "restoration/blind/search/refitCandidates.h"
#include "restoration/blind/search/searchBounds.h"
#include "restoration/blind/search/searchRuns.h"
#include "restoration/failures/Failure.h"

#include <algorithm>
#include <utility>

namespace restoration {
namespace {

KernelScorer scorerFor(const SearchParts& parts, const KernelBounds& bounds,
                       const Cancellation& cancellation) {
    const int side = std::min(bounds.side(), kLargestRunSide);
    return {parts.croppedFor(side), side / 2, parts.noise(), cancellation};
}

/// All candidates, best first.
RunResults candidatesOf(const SearchContext& search) {
    RunResults results =
        search.settings.start != nullptr ? refineStart(search) : searchRuns(search);
    std::vector<Candidate>& candidates = results.candidates;
    compareCandidates(candidates);
    if (auto analytic = analyticCandidate(bestOf(candidates), search)) {
        candidates.push_back(std::move(*analytic));
    }
    std::ranges::stable_sort(candidates, {}, &Candidate::score);
    return results;
}

std::vector<FoundKernel> search(const Plane& luminance, const FindSettings& settings, Team& team) {
    const KernelBounds bounds = searchBounds(luminance, settings);
    const SearchParts parts(luminance, settings, team);
    const KernelScorer scorer = scorerFor(parts, bounds, team.cancellation());
    const SearchContext context{settings, bounds, parts, scorer, team};

    RunResults results = candidatesOf(context);
    const EdgeSpectrum edges = compareAllWithEdges(results.candidates, context);
    std::vector<FoundKernel> found =
        foundKernels(results, refitCandidates(results.candidates, context));
    revise(judgeSharpness(results.candidates.front(), edges, context), results, context, found);
    for (FoundKernel& each : found) {
        each.kernel.trust = trustIn(each.evidence, static_cast<double>(each.confidence));
    }
    return found;
}

} // namespace

FoundKernel findKernel(const Plane& luminance, const FindSettings& settings, Team& team) {
    return std::move(findCandidates(luminance, settings, team).front());
}

std::vector<FoundKernel> findCandidates(const Plane& luminance, const FindSettings& settings,
                                        Team& team) {
    if (settings.region.isEmpty()) {
        return search(luminance, settings, team);
    }
    const Rect region =
        intersection(settings.region, {0, 0, luminance.width(), luminance.height()});
    if (region.isEmpty()) {
        throw Failure(VELORN_STATUS_NO_KERNEL, "the region to look at is outside of the picture");
    }
    return search(usablePart(luminance, region), settings, team);
}

} // namespace restoration
