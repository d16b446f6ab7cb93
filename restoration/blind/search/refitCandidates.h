#pragma once

#include "restoration/blind/search/Candidate.h"
#include "restoration/blind/search/SearchContext.h"
#include "restoration/kernels/Kernel.h"

#include <vector>

namespace restoration {

/// The candidates' kernels as they are handed out: those of runs are fitted again (refitKernel.h),
/// where kernels may be replaced; the others are cut to their content. What is known about the
/// candidates stays true.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::vector<Kernel> refitCandidates(const std::vector<Candidate>& candidates,
                                    const SearchContext& search);

} // namespace restoration
