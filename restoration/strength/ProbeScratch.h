#pragma once

#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"

namespace restoration {

/// The working memory of one worker for `FitProbe`.
struct ProbeScratch {
    /// @throws std::bad_alloc
    explicit ProbeScratch(int side)
        : tile(side), restored(side, side), blurred(side, side), disturbed(side, side) {}

    TileScratch tile;
    Plane restored;
    Plane blurred;   ///< the restoration, blurred again
    Plane disturbed; ///< the disturbed plane, then its restoration, blurred again
};

} // namespace restoration
