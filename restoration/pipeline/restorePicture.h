#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/kernels/KernelGrid.h"
#include "velorn.h"

#include <span>

namespace restoration {

/// Restores a picture, or a region of it. The arguments have passed the checks of the boundary:
/// pictures agree, settings are in their ranges, `settings.region` is the region, whole or not, and
/// there are 0 or 1 kernels, or one for each colour channel, none larger than the source.
///
/// The picture is cut into tiles on a fixed grid. Each tile runs on one thread, from its pixels to
/// its part of the result; parts are cross-faded in the order of the tiles and rounded. The result
/// is complete before the target is written.
///
/// Memory: the result in the target's samples, one row of tiles as floats, and for each thread the
/// planes of three tiles: one in work, with its spectra, and up to two that wait to be merged.
///
/// Works on threads of its own; the progress function of the settings runs on the calling thread.
/// @return what was found and done; times are measured
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc; the target is unchanged then
VelornRestoreReport restorePicture(const VelornPicture& source, const VelornPicture& target,
                                   std::span<const Kernel* const> kernels,
                                   const VelornRestoreSettings& settings);

/// The same for a blur that differs from place to place. A tile is restored with the kernel that
/// belongs to its middle. A grid whose kernels are all the same is restored as one kernel.
/// @param grid  no kernel larger than the source
VelornRestoreReport restorePicture(const VelornPicture& source, const VelornPicture& target,
                                   const KernelGrid& grid, const VelornRestoreSettings& settings);

} // namespace restoration
