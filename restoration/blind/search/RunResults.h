#pragma once

#include "restoration/blind/search/Candidate.h"
#include "restoration/blind/squares/SquareKernel.h"

#include <vector>

namespace restoration {

/// What the runs of a search have found.
struct RunResults {
    std::vector<Candidate> candidates;   ///< from the first part of the picture; at least one
    std::vector<SquareKernel> elsewhere; ///< from the other parts
};

} // namespace restoration
