#include "restoration/blind/candidates/contradictions.h"

#include <cmath>

namespace restoration {
namespace {

constexpr double kNarrowVariance = 2.5;
constexpr double kLeastDropOfWide = 0.003;
constexpr double kLeastAgreement = 0.67;
constexpr double kBlurredVariance = 0.75;
constexpr double kAgreementOfBlurred = 0.85;
constexpr double kMostOverblurOfBlurred = 1.5;
/// Found kernels of real blurs reach 1.8, but then other runs find similar ones.
constexpr double kMostOverblur = 1.0;
constexpr double kMostOverblurOfAgreed = 1.9;
/// Real blurs that are no straight motions lower the misfit by 0.15 at most.
constexpr double kLargestDrop = 0.2;
constexpr double kMostOverblurOfZeros = 4.0;
/// Blurs that the spectrum shows leave edges that have lost more.
constexpr double kSharpVariance = 0.47;

/// Blunt edges that fit the kernel, which the runs agree on.
bool edgesShowBlur(const Evidence& evidence) {
    return evidence.edgeBlur > kBlurredVariance && evidence.agreement > kAgreementOfBlurred &&
           evidence.overblur < kMostOverblurOfBlurred;
}

} // namespace

bool isNarrow(const Evidence& evidence) {
    return evidence.width < std::log(1.0 + kNarrowVariance);
}

bool spectrumContradictsBlur(const Evidence& evidence) {
    return !edgesShowBlur(evidence) && !isNarrow(evidence) &&
           evidence.spectralMisfit > -kLeastDropOfWide;
}

bool edgesContradictBlur(const Evidence& evidence) {
    const double most =
        evidence.agreement < kLeastAgreement ? kMostOverblur : kMostOverblurOfAgreed;
    return !isNarrow(evidence) && evidence.overblur > most;
}

bool showsPattern(const Evidence& evidence) {
    return !isNarrow(evidence) && evidence.spectralMisfit < -kLargestDrop;
}

bool edgesContradictZeros(const Evidence& evidence) {
    return evidence.edgeBlur < kSharpVariance && evidence.overblur > kMostOverblurOfZeros;
}

} // namespace restoration
