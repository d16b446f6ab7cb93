#include "restoration/blind/search/foundKernels.h"

#include "restoration/blind/squares/cutToContent.h"
#include "restoration/blind/squares/likeness.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace restoration {
namespace {

/// The least likeness with the kernels of other parts of the picture.
float partAgreementOf(const SquareKernel& kernel, const std::vector<SquareKernel>& elsewhere) {
    double least = 1.0;
    for (const SquareKernel& other : elsewhere) {
        least = std::min(least, likeness(kernel, other));
    }
    return static_cast<float>(least);
}

FoundKernel foundKernelOf(const Candidate& candidate, Kernel kernel,
                          const std::vector<SquareKernel>& elsewhere) {
    const Evidence& evidence = candidate.evidence;
    return {std::move(kernel),
            static_cast<float>(confidenceIn(evidence)),
            static_cast<float>(evidence.agreement),
            static_cast<float>(std::exp(evidence.misfit)),
            candidate.kind,
            scoreOf(evidence),
            evidence,
            partAgreementOf(candidate.kernel, elsewhere),
            1 + static_cast<int>(elsewhere.size())};
}

/// The kernel of a picture that is not blurred; its evidence is that for the best other kernel.
FoundKernel pointInsteadOf(FoundKernel best) {
    best.kernel = {1, 1, {1.0f}};
    best.kind = {KernelKind::Shape::None};
    best.partAgreement = 1.0f;
    best.parts = 1;
    return best;
}

} // namespace

std::vector<FoundKernel> foundKernels(const RunResults& results, std::vector<Kernel> kernels) {
    std::vector<FoundKernel> found;
    for (std::size_t i = 0; i < kernels.size(); ++i) {
        found.push_back(
            foundKernelOf(results.candidates[i], std::move(kernels[i]), results.elsewhere));
    }
    return found;
}

void revise(const Judgement& judgement, const RunResults& results, const SearchContext& search,
            std::vector<FoundKernel>& found) {
    if (judgement.narrower) {
        Kernel kernel = cutToContent(judgement.narrower->kernel, search.bounds);
        found.insert(found.begin(),
                     foundKernelOf(*judgement.narrower, std::move(kernel), results.elsewhere));
    }
    for (FoundKernel& kernel : found) {
        kernel.confidence = std::min(kernel.confidence, judgement.mostConfidence);
    }
    if (judgement.isSharp && search.settings.start == nullptr) {
        found.insert(found.begin(), pointInsteadOf(found.front()));
    }
}

} // namespace restoration
