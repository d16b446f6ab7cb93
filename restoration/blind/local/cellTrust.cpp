#include "restoration/blind/local/cellTrust.h"

#include "restoration/blind/candidates/Evidence.h"

#include <algorithm>

namespace restoration {

Trust cellTrust(const CellKernel& found, const Trust& whole) {
    constexpr float kStrongest = 300.0f;
    Trust trust = whole;
    if (found.isSharp) {
        trust.share = 1.0f;
    } else if (found.hasEvidence) {
        trust = trustIn(found.evidence, confidenceIn(found.evidence));
    }
    trust.strongest = std::min(trust.strongest, kStrongest);
    return trust;
}

} // namespace restoration
