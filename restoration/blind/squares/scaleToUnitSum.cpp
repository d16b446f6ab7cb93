#include "restoration/blind/squares/scaleToUnitSum.h"

namespace restoration {

void scaleToUnitSum(SquareKernel& kernel) {
    const double sum = kernel.sum();
    for (double& value : kernel.values) {
        value /= sum;
    }
}

} // namespace restoration
