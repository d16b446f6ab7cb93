#include "restoration/blind/refine/contradictsBlur.h"

#include "restoration/blind/squares/Spread.h"

namespace restoration {
namespace {

constexpr double kLeastDropOfWide = 0.003;

} // namespace

bool contradictsBlur(SpectralEvidence& spectrum, const SquareKernel& kernel) {
    return Spread(kernel).largest() >= kNarrowVariance &&
           spectrum.misfit(kernel) > -kLeastDropOfWide;
}

} // namespace restoration
