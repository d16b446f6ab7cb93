#pragma once

#include "restoration/blind/search/Candidate.h"
#include "restoration/blind/search/SearchContext.h"

#include <optional>

namespace restoration {

/// The blur that the picture's power spectrum shows (spectralBlur.h), where kernels may be
/// replaced; otherwise the Gaussian, disc or line that resembles `best`, the best kernel of the
/// runs. Nothing where there is neither, or where it exceeds the bounds.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::optional<Candidate> analyticCandidate(const Candidate& best, const SearchContext& search);

} // namespace restoration
