#include "restoration/blind/search/Candidate.h"

#include "restoration/blind/analytic/analyticKernelLike.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"

#include <algorithm>

namespace restoration {

Candidate candidateOf(const SquareKernel& kernel, const KernelScorer& scorer,
                      const Cancellation& cancellation) {
    const Evidence evidence = scorer.of(kernel, cancellation);
    const auto like = analyticKernelLike(kernel);
    return {kernel, evidence, like ? like->kind : KernelKind(), extentOf(kernel)};
}

const Candidate& bestOf(const std::vector<Candidate>& candidates) {
    return *std::ranges::min_element(candidates, {}, &Candidate::score);
}

void compareCandidates(std::vector<Candidate>& candidates) {
    for (Candidate& candidate : candidates) {
        for (const Candidate& other : candidates) {
            if (&other != &candidate) {
                candidate.evidence.agreement = std::max(candidate.evidence.agreement,
                                                        likeness(candidate.kernel, other.kernel));
            }
        }
    }
}

} // namespace restoration
