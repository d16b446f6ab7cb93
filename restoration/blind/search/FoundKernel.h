#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/blind/candidates/Evidence.h"
#include "restoration/kernels/Kernel.h"

namespace restoration {

/// A kernel found in a picture.
struct FoundKernel {
    Kernel kernel;
    /// The probability that a full restoration is better than the picture, 0..1 (see
    /// Evidence.h); below 0.5 where the picture may be sharp.
    float confidence = 0.0f;
    /// The likeness of the kernel and the most similar one that another run has found, 0..1; 1 for
    /// blurs that the power spectrum shows.
    float agreement = 0.0f;
    /// Mean squared residual of a restoration with the kernel, in units of the noise variance.
    float misfit = 0.0f;
    /// The blur that the kernel is, or one that it resembles.
    KernelKind kind;
    /// How well the kernel explains the picture, compared with others for the same picture (see
    /// Evidence.h); smaller is better.
    double score = 0.0;
    /// What the score comes from. A single pixel has both from the best other kernel.
    Evidence evidence;
    /// The least likeness with the kernels of other parts of the picture, 0..1; 1 where only one
    /// was looked at. Low where the blur differs across the picture, or is hard to find there.
    float partAgreement = 1.0f;
    int parts = 1; ///< that kernels were found in
};

} // namespace restoration
