#include "restoration/blind/candidates/Evidence.h"

#include "restoration/blind/squares/Spread.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

double weightedSum(const Evidence& evidence, double EvidenceWeight::*weight) {
    double sum = 0.0;
    for (const EvidenceWeight& part : kEvidenceWeights) {
        sum += part.*weight * evidence.*part.value;
    }
    return sum;
}

} // namespace

double widthOf(const SquareKernel& kernel) {
    return std::log(1.0 + Spread(kernel).largest());
}

double scoreOf(const Evidence& evidence) {
    return weightedSum(evidence, &EvidenceWeight::score);
}

double confidenceIn(const Evidence& evidence) {
    const double odds = kConfidenceOffset + weightedSum(evidence, &EvidenceWeight::confidence);
    return 1.0 / (1.0 + std::exp(-odds));
}

Trust trustIn(const Evidence& evidence, double confidence) {
    constexpr float kStrongestForFree = 3000.0f;
    constexpr double kNoShareUntil = 0.1;
    constexpr double kFullShareFrom = 0.5;
    Trust trust;
    if (evidence.isAnalytic == 0.0) {
        trust.strongest = kStrongestForFree;
    }
    trust.share = static_cast<float>(
        std::clamp((confidence - kNoShareUntil) / (kFullShareFrom - kNoShareUntil), 0.0, 1.0));
    return trust;
}

} // namespace restoration
