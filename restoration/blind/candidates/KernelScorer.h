#pragma once

#include "restoration/blind/candidates/Evidence.h"
#include "restoration/blind/candidates/PictureSpectrum.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// Collects the evidence for and against kernels of one picture. Constant after construction;
/// threads may share it.
class KernelScorer {
public:
    /// @param picture       luminance, 1.0 = white
    /// @param largestRadius of all kernels
    /// @param noise         standard deviation in levels of 255, above 0
    KernelScorer(const Plane& picture, int largestRadius, double noise,
                 const Cancellation& cancellation);

    /// Restores the picture with `kernel` on the calling thread. What is only known among several
    /// kernels (`reachesRim`, `isAnalytic`, `agreement`) is left at 0.
    Evidence of(const SquareKernel& kernel, const Cancellation& cancellation) const;

    /// The side of the transforms: `of` takes about as much time as one and a half iterations of a
    /// run at this side.
    int side() const noexcept { return m_wrapped.height(); }

private:
    /// The mean square root of the gradients' lengths over that of the picture.
    double sparsityOf(const Plane& restored) const;
    /// The share of pixels whose latent gradients are kept.
    double shareOfEdges(const SquareKernel& kernel, const Cancellation& cancellation) const;

    int m_width;
    int m_height;
    double m_noise;
    Plane m_wrapped;
    PictureSpectrum m_spectrum;
};

} // namespace restoration
