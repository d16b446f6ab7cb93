#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/blind/candidates/Evidence.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// What a search may look for and where.
struct FindSettings {
    int maxWidth = 0;  ///< sides that the kernel may have, 3..511; 0: as the picture allows
    int maxHeight = 0; ///< the same
    int partSide = 0;  ///< the side of the square to look at, at least 64; 0: chosen
    /// Deviation in pixels of the Gaussian that smooths the edges which a kernel is fitted to at
    /// last, 0..2
    double smoothing = 0.0;
    /// The rectangle of the picture to look at; empty: all of it. What lies outside of the picture
    /// is ignored.
    Rect region{};
    /// A kernel to refine; null: none. Its sides are at most 71 and a third of the shorter side of
    /// the picture; those above count for nothing then.
    const Kernel* start = nullptr;
};

/// A kernel found in a picture.
struct FoundKernel {
    Kernel kernel;
    /// The probability that a full restoration is clearly better than the picture, 0..1 (see
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

/// Finds the blur kernel of a picture.
///
/// Three runs (KernelRun.h) of different strength and size estimate a kernel each; the kernel with
/// the best score (Evidence.h) is the result. Further candidates are a Gaussian, disc or straight
/// motion that the power spectrum shows (spectralBlur.h), unless edges are smoothed or a kernel is
/// refined, and otherwise a Gaussian, disc or line that resembles the best kernel. At last the
/// kernels of the runs are fitted again (refitKernel.h), under the same conditions. Runs look at a
/// part of the picture with many edges (edgeParts.h) of about 500 by 500 pixels: the one in which
/// they are sharpest (sharpestFirst.h). Where the search chooses, and the picture has room for
/// them, a run looks at up to two further parts. The kernel is centred, has sum 1, no negative
/// weights, and odd sides that are at most the largest ones, 71, and a third of the picture's
/// shorter side; without largest sides at most a fifth of it. A region to look at counts as the
/// picture.
///
/// Blown lamps are replaced by their surroundings first (fillLamps.h).
///
/// Edges that are as steep as those of sharp pictures (EdgeSpectrum.h) contradict a narrow kernel,
/// and kernels that disagree: the result is then the kernel of a single pixel. A narrow kernel that
/// is wider than the edges allow (excessBlur.h) gives way to the one that they show
/// (kernelOfEdges.h).
///
/// A kernel to refine replaces the search: the two finest levels of a run begin with it. Candidates
/// are the refined kernel, the kernel itself, and the analytic one like the better of the two.
///
/// The runs are pieces of `team`. The result does not depend on the number of threads or on the
/// processor. Memory: about 20 MB beyond the picture's, 30 MB on two threads, whatever the
/// picture's size, unless `partSide` is larger than 512; a copy of the region.
/// @param luminance 1.0 = white; values that are not finite count as 0
/// @throws Failure VELORN_STATUS_NO_KERNEL for pictures without edges, pictures and regions with
///         less than 32 columns or rows; VELORN_STATUS_KERNEL_TOO_LARGE for a kernel to refine;
///         VELORN_STATUS_CANCELLED; std::bad_alloc
FoundKernel findKernel(const Plane& luminance, const FindSettings& settings, Team& team);

/// All kernels that the search considers at last, best first: the first one is that of
/// `findKernel`, the others are worth a look where it fails. At least one; otherwise as
/// `findKernel`.
std::vector<FoundKernel> findCandidates(const Plane& luminance, const FindSettings& settings,
                                        Team& team);

} // namespace restoration
