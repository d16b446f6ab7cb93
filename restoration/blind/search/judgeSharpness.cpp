#include "restoration/blind/search/judgeSharpness.h"

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/parts/excessBlur.h"
#include "restoration/blind/parts/kernelOfEdges.h"
#include "restoration/blind/refine/contradictsBlur.h"
#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/squares/cutToContent.h"
#include "restoration/blind/squares/kernelShape.h"
#include "restoration/blind/squares/Spread.h"

namespace restoration {
namespace {

constexpr double kLeastAgreement = 0.85;
/// Edges with less blur than the first are sharp; with less than the second they may be.
constexpr double kSharpVariance = 0.47;
constexpr double kDoubtfulVariance = 0.6;
/// A kernel that takes more power from edges than this, beyond what they have lost, is too wide.
constexpr double kLargestExcess = 1.2;
constexpr int kSmallExtent = 13;
constexpr float kDoubtfulConfidence = 0.45f;
constexpr float kSharpConfidence = 0.2f;

/// The kernel of the edges if `first` is wider than they allow.
std::optional<Candidate> narrowerThan(const Candidate& first, const EdgeSpectrum& edges,
                                      const SearchContext& search) {
    if (excessBlur(edges, withSide(first.kernel, first.extent)) <= kLargestExcess) {
        return std::nullopt;
    }
    const SquareKernel kernel = kernelOfEdges(edges);
    if (extentOf(kernel) > search.bounds.smallerSide()) {
        return std::nullopt;
    }
    Candidate narrower = candidateOf(kernel, search.scorer, search.team.cancellation());
    narrower.evidence.isAnalytic = 1.0;
    narrower.evidence.isOfEdges = 1.0;
    narrower.evidence.agreement = first.evidence.agreement;
    return narrower;
}

/// Searches find a small kernel, or kernels that disagree, in a picture that is not blurred, and
/// too wide kernels where blurs are small or no edge was sharp.
Judgement judgeByEdges(const Candidate& first, const SearchContext& search) {
    Judgement judgement;
    const bool isDoubtful = first.evidence.agreement < kLeastAgreement;
    if (first.extent > kSmallExtent && !isDoubtful) {
        return judgement;
    }
    const bool isNarrow = Spread(first.kernel).largest() < kNarrowVariance;
    EdgeSpectrum edges;
    search.team.run([&] {
        edges = edgeSpectrum(search.parts.centre(), search.team.cancellation());
        if (isNarrow && search.settings.allowsReplacement()) {
            judgement.narrower = narrowerThan(first, edges, search);
        }
    });
    const bool mayBeSharp = (isNarrow || isDoubtful) && edges.showsEdges;
    if (mayBeSharp && edges.blurVariance < kSharpVariance) {
        judgement.isSharp = true;
        judgement.mostConfidence = kSharpConfidence;
    } else if (mayBeSharp && edges.blurVariance < kDoubtfulVariance) {
        judgement.mostConfidence = kDoubtfulConfidence;
    }
    return judgement;
}

/// Whether the power spectrum can contradict a kernel.
bool isJudgedBySpectrum(const Candidate& first, const KernelBounds& bounds) {
    const bool isStroke =
        first.evidence.isAnalytic > 0.0 && first.kind.shape == KernelKind::Shape::Motion;
    // A kernel that fills its bounds may lack what lies outside.
    const Kernel content = cutToContent(first.kernel, bounds);
    return !isStroke && content.width < bounds.width && content.height < bounds.height;
}

bool isContradictedBySpectrum(const Candidate& first, const SearchContext& search) {
    bool isContradicted = false;
    search.team.run([&] {
        SpectralEvidence spectrum(search.parts.centre(), search.parts.noiseVariance(),
                                  search.team.cancellation());
        isContradicted = contradictsBlur(spectrum, withSide(first.kernel, first.extent));
    });
    return isContradicted;
}

} // namespace

Judgement judgeSharpness(const Candidate& first, const SearchContext& search) {
    if (first.evidence.showsZeros > 0.0) {
        return {};
    }
    Judgement judgement = judgeByEdges(first, search);
    const bool isOpen = !judgement.isSharp && !judgement.narrower;
    if (isOpen && isJudgedBySpectrum(first, search.bounds) &&
        isContradictedBySpectrum(first, search)) {
        judgement.isSharp = true;
        judgement.mostConfidence = kSharpConfidence;
    }
    return judgement;
}

} // namespace restoration
