#include "restoration/blind/analytic/kernelOfKind.h"

#include "restoration/blind/analytic/strokeKernel.h"
#include "restoration/blind/squares/kernelShape.h"
#include "restoration/kernels/analyticKernel.h"

#include <algorithm>

namespace restoration {
namespace {

SquareKernel squareOf(const Kernel& kernel) {
    SquareKernel square(kernel.largerSide());
    const int down = (square.side - kernel.height) / 2;
    const int right = (square.side - kernel.width) / 2;
    for (int y = 0; y < kernel.height; ++y) {
        for (int x = 0; x < kernel.width; ++x) {
            square.at(y + down, x + right) = static_cast<double>(kernel.at(y, x));
        }
    }
    return withSide(square, square.side);
}

} // namespace

SquareKernel kernelOfKind(const KernelKind& kind) {
    if (kind.shape == KernelKind::Shape::Motion) {
        return strokeKernel(std::max(static_cast<double>(kind.extent) - 1.0, 0.0),
                            static_cast<double>(kind.angle));
    }
    const VelornBlur blur =
        kind.shape == KernelKind::Shape::Disc ? VELORN_BLUR_DISC : VELORN_BLUR_GAUSSIAN;
    return squareOf(analyticKernel(blur, kind.extent, 0.0f));
}

} // namespace restoration
