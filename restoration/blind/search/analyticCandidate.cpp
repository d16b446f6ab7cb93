#include "restoration/blind/search/analyticCandidate.h"

#include "restoration/blind/analytic/analyticKernelLike.h"
#include "restoration/blind/analytic/kernelOfKind.h"
#include "restoration/blind/analytic/spectralBlur.h"
#include "restoration/blind/search/searchBounds.h"
#include "restoration/blind/squares/kernelSides.h"

#include <algorithm>

namespace restoration {
namespace {

std::optional<AnalyticKernel> shownBySpectrum(const SearchContext& search) {
    const double largest = std::min(search.bounds.smallerSide(), kLargestRunSide);
    const auto kind = spectralBlur(search.parts.first(), largest, search.team.cancellation());
    return kind ? std::optional(AnalyticKernel{*kind, kernelOfKind(*kind)}) : std::nullopt;
}

/// The evidence for a kernel that the spectrum shows, or that is like `best`.
Evidence evidenceFor(const AnalyticKernel& analytic, bool isShown, const Candidate& best,
                     const SearchContext& search) {
    Evidence evidence = search.scorer.of(analytic.kernel, search.team.cancellation());
    evidence.isAnalytic = 1.0;
    evidence.showsZeros = isShown ? 1.0 : 0.0;
    evidence.reachesRim = isShown ? 0.0 : best.evidence.reachesRim;
    evidence.spectralMisfit = best.evidence.spectralMisfit;
    evidence.agreement = isShown ? 1.0 : best.evidence.agreement;
    return evidence;
}

} // namespace

std::optional<Candidate> analyticCandidate(const Candidate& best, const SearchContext& search) {
    search.team.progress().beginPhase(0.8, 2);
    std::optional<Candidate> candidate;
    search.team.run([&] {
        const auto shown =
            search.settings.allowsReplacement() ? shownBySpectrum(search) : std::nullopt;
        search.team.progress().advance();
        const auto analytic = shown ? shown : analyticKernelLike(best.kernel);
        const int extent = analytic ? extentOf(analytic->kernel) : 0;
        if (analytic && extent <= search.bounds.smallerSide()) {
            candidate = {analytic->kernel, evidenceFor(*analytic, shown.has_value(), best, search),
                         analytic->kind, extent};
        }
        search.team.progress().advance();
    });
    return candidate;
}

} // namespace restoration
