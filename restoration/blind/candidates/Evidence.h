#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/kernels/Kernel.h"

#include <array>

namespace restoration {

/// The evidence for and against a kernel found in a picture. Logarithms are natural; x is a
/// restoration of the picture y with the kernel, both in levels of 255.
struct Evidence {
    /// Of the mean square root of the gradients' lengths in x over that in y, the logarithm.
    double sparsity = 0.0;
    /// Of the share of pixels whose latent gradients are kept, the logarithm.
    double edges = 0.0;
    /// Of the mean squared difference between x, blurred again, and y, the logarithm.
    double residual = 0.0;
    /// The same in units of the noise variance.
    double misfit = 0.0;
    /// The mean negative logarithm of the likelihood of y's power spectrum, when x has the spectrum
    /// of a natural picture.
    double unlikelihood = 0.0;
    /// Of the variance that this leaves in the logarithms of y's power spectrum, within rings of
    /// frequencies, the logarithm.
    double unevenness = 0.0;
    /// The misfit of y's power spectrum with a free kernel less that without a blur, where the
    /// level of the sharp spectrum is free in each patch of frequencies (SpectralEvidence);
    /// negative where y looks blurred by the kernel. Analytic kernels have that of the best free
    /// one.
    double spectralMisfit = 0.0;
    /// Of the mean of what x exceeds black and white by, the logarithm.
    double excess = 0.0;
    /// The kernel's entropy, less that which its second moments suggest.
    double raggedness = 0.0;
    /// 1 where the kernel reaches the rim of the square of its run, and may lack what lies outside.
    double reachesRim = 0.0;
    /// 1 for a Gaussian, disc or line, 0 for a free kernel.
    double isAnalytic = 0.0;
    /// 1 for a blur that the power spectrum of y shows, by zeros or by its fall (spectralBlur.h).
    double showsZeros = 0.0;
    /// 1 for the kernel that the steepness of the edges shows.
    double isOfEdges = 0.0;
    /// The likeness with the most similar kernel of another run, 0..1; 1 with `showsZeros`.
    double agreement = 0.0;
    /// How much more power the kernel takes from edges than those of y have lost, in powers of e
    /// (excessBlur.h).
    double overblur = 0.0;
    /// The variance of the Gaussian that y's edges have lost as much as (EdgeSpectrum.h).
    double edgeBlur = 0.0;
    /// Of 1 and the largest variance of the kernel, the logarithm.
    double width = 0.0;
};

/// A part of the evidence and its weights.
struct EvidenceWeight {
    const char* name;
    double Evidence::*value;
    double score;      ///< in the score of a candidate; smaller scores are better
    double confidence; ///< in the logarithm of the odds
};

/// The weights, as `tools/blind/fitChoice.py` fits them to what `studyCandidates` writes for half 0
/// of the study of the blind search.
///
/// Those of the score were fitted to 127 pictures, for the largest expected gain, and rounded. On
/// 106 others they gain as much as cross-validated refits. That of `spectralMisfit` was chosen on
/// 60 pictures with free blurs: twice as much gains the same. That of `showsZeros` is given:
/// pictures that are blurred in parts only need a larger one than those of the study. Those of the
/// confidence were fitted to 186 pictures that the search restores, blurred or not, for predicting
/// gains.
inline constexpr std::array kEvidenceWeights{
    EvidenceWeight{"sparsity", &Evidence::sparsity, 1.0, 0.0},
    EvidenceWeight{"edges", &Evidence::edges, 0.5, 0.0},
    EvidenceWeight{"residual", &Evidence::residual, 1.1, 0.0},
    EvidenceWeight{"misfit", &Evidence::misfit, 0.0, 0.0},
    EvidenceWeight{"unlikelihood", &Evidence::unlikelihood, 1.0, 0.0},
    EvidenceWeight{"unevenness", &Evidence::unevenness, 0.0, -0.224},
    EvidenceWeight{"spectralMisfit", &Evidence::spectralMisfit, 40.0, 0.0},
    EvidenceWeight{"excess", &Evidence::excess, 0.0, -0.448},
    EvidenceWeight{"raggedness", &Evidence::raggedness, 0.0, 0.0},
    EvidenceWeight{"reachesRim", &Evidence::reachesRim, 0.1, 0.0},
    EvidenceWeight{"isAnalytic", &Evidence::isAnalytic, -0.55, 0.0},
    EvidenceWeight{"showsZeros", &Evidence::showsZeros, -2.0, 0.0},
    EvidenceWeight{"isOfEdges", &Evidence::isOfEdges, 0.0, 0.0},
    EvidenceWeight{"agreement", &Evidence::agreement, 0.0, 5.35},
    EvidenceWeight{"overblur", &Evidence::overblur, 0.0, 0.0},
    EvidenceWeight{"edgeBlur", &Evidence::edgeBlur, 0.0, 0.0},
    EvidenceWeight{"width", &Evidence::width, 0.0, 0.0},
};
inline constexpr double kConfidenceOffset = -4.92;

/// `Evidence::width` of a kernel of sum 1.
double widthOf(const SquareKernel& kernel);

/// How well a kernel explains the picture, compared with others for the same picture; smaller is
/// better.
double scoreOf(const Evidence& evidence);

/// The probability that a full restoration with the kernel is better than the picture, 0..1.
double confidenceIn(const Evidence& evidence);

/// How far a restoration may rely on a kernel that was found with this confidence, 0..1.
///
/// Analytic kernels bear any strength: on 25 pictures of half 0 of the study it gains 0.5 dB more
/// than one of 3000. On 21 with free kernels it loses 0.2 dB, and one of 300 neither gains nor
/// loses. Where the confidence is below 0.5, part of the result is the picture itself; at 0.1 and
/// below, all of it: the squared error of a mixture is at most the mean of both, and usually less
/// than either.
Trust trustIn(const Evidence& evidence, double confidence);

} // namespace restoration
