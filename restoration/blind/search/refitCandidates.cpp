#include "restoration/blind/search/refitCandidates.h"

#include "restoration/blind/refine/refitKernel.h"
#include "restoration/blind/squares/cutToContent.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace restoration {
namespace {

std::optional<SquareKernel> refitted(const Candidate& candidate, const SearchContext& search) {
    const int side = std::min(candidate.extent + kRefitRoom, search.bounds.side());
    return refitKernel(search.parts.croppedFor(side), search.parts.noiseVariance(),
                       candidate.kernel, search.bounds, search.team.progress(),
                       search.team.cancellation());
}

/// The numbers of the candidates that are fitted again.
std::vector<std::size_t> freeOnes(const std::vector<Candidate>& candidates,
                                  const FindSettings& settings) {
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (candidates[i].evidence.isAnalytic == 0.0 && settings.allowsReplacement()) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

} // namespace

std::vector<Kernel> refitCandidates(const std::vector<Candidate>& candidates,
                                    const SearchContext& search) {
    std::vector<Kernel> kernels;
    for (const Candidate& candidate : candidates) {
        kernels.push_back(cutToContent(candidate.kernel, search.bounds));
    }
    const std::vector<std::size_t> fitted = freeOnes(candidates, search.settings);
    search.team.progress().beginPhase(1.0, std::max(fitted.size() * kRefitUnits, std::size_t{1}));
    search.team.forEach(fitted.size(), [&](std::size_t piece, int) {
        const std::size_t i = fitted[piece];
        if (const auto kernel = refitted(candidates[i], search)) {
            kernels[i] = cutToContent(*kernel, search.bounds);
        }
    });
    return kernels;
}

} // namespace restoration
