#pragma once

#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/search/FindSettings.h"
#include "restoration/blind/search/SearchParts.h"
#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/threads/Team.h"

#include <cstddef>

namespace restoration {

/// What all steps of a search share.
struct SearchContext {
    const FindSettings& settings;
    const KernelBounds& bounds;
    const SearchParts& parts;
    const KernelScorer& scorer; ///< for the first part
    Team& team;

    /// The work of scoring a kernel, in the units of runs.
    std::size_t scoreUnits() const {
        const auto side = static_cast<std::size_t>(scorer.side());
        return 3 * side * side / 2;
    }
};

} // namespace restoration
