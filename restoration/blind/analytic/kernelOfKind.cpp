#include "restoration/blind/analytic/kernelOfKind.h"

#include "restoration/blind/analytic/strokeKernel.h"
#include "restoration/blind/squares/squareKernelOf.h"
#include "restoration/kernels/analyticKernel.h"

#include <algorithm>

namespace restoration {
SquareKernel kernelOfKind(const KernelKind& kind) {
    if (kind.shape == KernelKind::Shape::Motion) {
        return strokeKernel(std::max(static_cast<double>(kind.extent) - 1.0, 0.0),
                            static_cast<double>(kind.angle));
    }
    const VelornBlur blur =
        kind.shape == KernelKind::Shape::Disc ? VELORN_BLUR_DISC : VELORN_BLUR_GAUSSIAN;
    const Kernel kernel = analyticKernel(blur, kind.extent, 0.0f);
    return squareKernelOf(kernel, kernel.largerSide());
}

} // namespace restoration
