#pragma once

#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/threads/ProgressMeter.h"

#include <cstddef>
#include <optional>

namespace restoration {

/// Fits a kernel that a run has found again: between pixels, and to the picture's power spectrum.
///
/// Runs move kernels by whole pixels only, therefore a kernel found may be displaced by up to half
/// a pixel. A thin kernel then spreads over two pixels, and restorations are displaced, too. Here
/// the edges behind the blur (LatentGradients) are moved against the picture by a part of a pixel,
/// so that the centre of mass of the kernel lies in the middle of a pixel, and the kernel is solved
/// for again (KernelSolver). A picture does not show where the kernel's middle is; its centre of
/// mass there means that restorations keep the place of the picture on the mean. The edges behind
/// the kernel placed so give the next one. They are smoothed by 0.3 pixels, since edges of
/// photographs are not as steep as those of the model.
///
/// The kernel then moves towards one whose power spectrum explains that of the picture
/// (SpectralEvidence), which edges alone do not determine well, and is fitted to the edges once
/// more.
///
/// @param picture  as for `runSearch`
/// @param noiseVariance of `picture`, above 0
/// @param found    a centred kernel of sum 1
/// @param bounds   of the result
/// @param progress advances by `kRefitUnits`; by less where nothing is returned
/// @returns a centred kernel of sum 1; nothing when the picture has no edges
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::optional<SquareKernel> refitKernel(const Plane& picture, double noiseVariance,
                                        const SquareKernel& found, const KernelBounds& bounds,
                                        ProgressMeter& progress, const Cancellation& cancellation);

/// By how much the side of the result may exceed that of the content of `found`.
inline constexpr int kRefitRoom = 16;
inline constexpr std::size_t kSpectrumUnits = 4;
inline constexpr std::size_t kRefitUnits = 8 + kSpectrumUnits;

} // namespace restoration
