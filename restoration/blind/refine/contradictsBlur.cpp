#include "restoration/blind/refine/contradictsBlur.h"

#include "restoration/blind/squares/largestVariance.h"

namespace restoration {
namespace {

constexpr double kLeastDropOfWide = 0.003;

} // namespace

bool contradictsBlur(SpectralEvidence& spectrum, const SquareKernel& kernel) {
    return largestVariance(kernel) >= kNarrowVariance &&
           spectrum.misfit(kernel) > -kLeastDropOfWide;
}

} // namespace restoration
