#include "restoration/blind/search/judgeSharpness.h"

#include "restoration/blind/candidates/contradictions.h"
#include "restoration/blind/parts/kernelOfEdges.h"
#include "restoration/blind/search/compareWithEdges.h"
#include "restoration/blind/squares/cutToContent.h"
#include "restoration/blind/squares/kernelSides.h"

namespace restoration {
namespace {

constexpr double kLeastAgreement = 0.85;
/// Edges with less blur than the first are sharp; with less than the second they may be.
constexpr double kSharpVariance = 0.47;
constexpr double kSharpVarianceOfNarrow = 0.56; ///< instead of the first for narrow kernels
constexpr double kDoubtfulVariance = 0.65;
/// Narrow kernels of real blurs lower the misfit of the power spectrum by this.
constexpr double kLeastDropOfNarrow = 0.0012;
/// A kernel that takes more power from edges than this, beyond what they have lost, is too wide.
constexpr double kLargestExcess = 1.2;
constexpr int kSmallExtent = 13;
constexpr float kDoubtfulConfidence = 0.45f;
constexpr float kSharpConfidence = 0.2f;

/// The kernel of the edges if `first` is wider than they allow.
std::optional<Candidate> narrowerThan(const Candidate& first, const EdgeSpectrum& edges,
                                      const SearchContext& search) {
    if (first.evidence.overblur <= kLargestExcess) {
        return std::nullopt;
    }
    const SquareKernel kernel = kernelOfEdges(edges);
    if (extentOf(kernel) > search.bounds.smallerSide()) {
        return std::nullopt;
    }
    Candidate narrower = candidateOf(kernel, search.scorer, search.team.cancellation());
    narrower.evidence.isAnalytic = 1.0;
    narrower.evidence.isOfEdges = 1.0;
    narrower.evidence.spectralMisfit = first.evidence.spectralMisfit;
    narrower.evidence.agreement = first.evidence.agreement;
    compareWithEdges(edges, narrower);
    return narrower;
}

/// Whether edges of this blur are those of a sharp picture, in which `first` was found.
bool isSharp(const Candidate& first, double blurVariance) {
    if (blurVariance < kSharpVariance) {
        return true;
    }
    return isNarrow(first.evidence) && (blurVariance < kSharpVarianceOfNarrow ||
                                        (blurVariance < kDoubtfulVariance &&
                                         first.evidence.spectralMisfit > -kLeastDropOfNarrow));
}

Judgement sharpPicture() {
    Judgement judgement;
    judgement.isSharp = true;
    judgement.mostConfidence = kSharpConfidence;
    return judgement;
}

/// Searches find a small kernel, or kernels that disagree, in a picture that is not blurred, and
/// too wide kernels where blurs are small or no edge was sharp.
Judgement judgeByEdges(const Candidate& first, const EdgeSpectrum& edges,
                       const SearchContext& search) {
    Judgement judgement;
    const bool isDoubtful = first.evidence.agreement < kLeastAgreement;
    if (first.extent > kSmallExtent && !isDoubtful) {
        return judgement;
    }
    const bool mayBeSharp = (isNarrow(first.evidence) || isDoubtful) && edges.showsEdges;
    if (mayBeSharp && isSharp(first, edges.blurVariance)) {
        judgement = sharpPicture();
    } else if (mayBeSharp && edges.blurVariance < kDoubtfulVariance) {
        judgement.mostConfidence = kDoubtfulConfidence;
    }
    search.team.run([&] {
        if (isNarrow(first.evidence) && search.settings.allowsReplacement()) {
            judgement.narrower = narrowerThan(first, edges, search);
        }
    });
    return judgement;
}

/// Whether the power spectrum can contradict a kernel.
bool isJudgedBySpectrum(const Candidate& first, const SearchContext& search) {
    const KernelBounds& bounds = search.bounds;
    const bool isStroke =
        first.evidence.isAnalytic > 0.0 && first.kind.shape == KernelKind::Shape::Motion;
    // A kernel that fills its bounds may lack what lies outside.
    const Kernel content = cutToContent(first.kernel, bounds);
    return search.settings.start == nullptr && !isStroke && content.width < bounds.width &&
           content.height < bounds.height;
}

} // namespace

Judgement judgeSharpness(const Candidate& first, const EdgeSpectrum& edges,
                         const SearchContext& search) {
    const Evidence& evidence = first.evidence;
    if (evidence.showsZeros > 0.0) {
        return edges.showsEdges && edgesContradictZeros(evidence) ? sharpPicture() : Judgement();
    }
    const Judgement judgement = judgeByEdges(first, edges, search);
    if (edgesContradictBlur(evidence) || showsPattern(evidence)) {
        return sharpPicture();
    }
    const bool isOpen = !judgement.isSharp && !judgement.narrower;
    return isOpen && isJudgedBySpectrum(first, search) && spectrumContradictsBlur(evidence)
               ? sharpPicture()
               : judgement;
}

} // namespace restoration
