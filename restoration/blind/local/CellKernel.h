#pragma once

#include "restoration/blind/candidates/Evidence.h"
#include "restoration/blind/squares/SquareKernel.h"

namespace restoration {

/// The kernel of one cell of a picture, as far as it is known.
struct CellKernel {
    SquareKernel kernel{}; ///< of side bounds.side()
    Evidence evidence{};
    bool hasEvidence = false; ///< the kernel was compared with others in the cell
    /// 0..1: the likeness of the kernels that searches from different starts have found; 0 where
    /// the cell has too few edges.
    double agreement = 0.0;
    bool isSharp = false;        ///< the cell is not blurred: a kernel of a single pixel
    bool isContradicted = false; ///< the power spectrum contradicts that the cell is blurred

    double score() const { return scoreOf(evidence); } ///< smaller is better
    /// How much the kernel counts for its neighbours and in means over cells; 0 for sharp cells.
    double weight() const noexcept { return isSharp ? 0.0 : agreement * agreement * agreement; }
};

} // namespace restoration
