#include "restoration/blind/candidates/Evidence.h"

namespace restoration {

double scoreOf(const Evidence& evidence) {
    double sum = 0.0;
    for (const EvidenceWeight& part : kEvidenceWeights) {
        sum += part.score * evidence.*part.value;
    }
    return sum;
}

Trust trustIn(const Evidence& evidence) {
    return evidence.showsZeros > 0.0 ? Trust{} : Trust{3000.0f, 1.0f};
}

} // namespace restoration
