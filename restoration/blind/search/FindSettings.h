#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Rect.h"

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

    bool choosesPart() const noexcept { return partSide == 0; }
    /// Whether the search may replace the kernels of runs by better ones: not where the host wants
    /// a kernel refined or smoothed.
    bool allowsReplacement() const noexcept { return start == nullptr && smoothing <= 0.0; }
};

} // namespace restoration
