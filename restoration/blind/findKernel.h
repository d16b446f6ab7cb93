#pragma once

#include "restoration/blind/search/FindSettings.h"
#include "restoration/blind/search/FoundKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// Finds the blur kernel of a picture.
///
/// Six runs (KernelRun.h) of different strength and size estimate a kernel each; the kernel with
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
