#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// How well a kernel explains a picture.
struct KernelScore {
    /// ln p + 0.1 ln(z + 1e-4) + 0.05 ln(e + 0.05); smaller is better. p is the mean square root of
    /// the gradients' lengths in the restoration over that in the picture, z the share of pixels
    /// whose latent gradients are kept, e is `residual`.
    double value = 0.0;
    /// Mean squared difference of the restoration, blurred again, and the picture, in levels of 255
    /// squared.
    double residual = 0.0;
};

/// Scores kernels on one picture. Constant after construction; threads may share it.
class KernelScorer {
public:
    /// @param picture       luminance, 1.0 = white
    /// @param largestRadius of all kernels
    KernelScorer(const Plane& picture, int largestRadius, const Cancellation& cancellation);

    /// Restores the picture with `kernel` on the calling thread.
    KernelScore of(const SquareKernel& kernel, const Cancellation& cancellation) const;

    /// The side of the transforms: `of` takes about as much time as one and a half iterations of a
    /// run at this side.
    int side() const noexcept { return m_wrapped.height(); }

private:
    int m_width;
    int m_height;
    Plane m_wrapped;
};

} // namespace restoration
