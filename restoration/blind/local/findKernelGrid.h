#pragma once

#include "restoration/blind/findKernel.h"
#include "restoration/blind/local/CellReport.h"
#include "restoration/kernels/KernelGrid.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// Kernels found in the parts of a picture.
struct FoundGrid {
    KernelGrid grid;
    std::vector<CellReport> reports; ///< row by row
    /// Of the whole picture, best first; with several cells the first one is not a single pixel.
    std::vector<FoundKernel> whole;
};

/// Finds the kernels of a picture whose blur differs from place to place.
///
/// First finds the kernel of the whole picture (`findCandidates`); the best one that blurs counts.
/// A grid of cells of about 300 pixels, at most 5 by 5, is laid over the picture. In each cell that
/// kernel is refined, another search starts afresh, both are fitted again, and the kernel with the
/// better score counts; afterwards the mean kernel of the neighbours is refined and fitted, and
/// counts where it is better still. Each cell is then divided into four, which begin with the
/// kernels around them. The kernels are moved, by parts of pixels, so that their centres of mass
/// agree, and smoothed over neighbouring cells with weights by reliability. Cells without edges
/// take what their neighbours have; sharp cells get the kernel of a single pixel. The trust in each
/// kernel follows from the evidence in its cell.
///
/// The grid has a single cell where the picture is sharp, is too small for several cells, or where
/// the kernels of the cells resemble that of the whole picture. Where the first kernel of the whole
/// picture is a single pixel, and the power spectra of most cells do not show a blur either, the
/// picture is sharp.
///
/// The cells are pieces of `team`. The result does not depend on the number of threads or on the
/// processor.
/// @throws as findKernel
FoundGrid findKernelGrid(const Plane& luminance, const FindSettings& settings, Team& team);

} // namespace restoration
