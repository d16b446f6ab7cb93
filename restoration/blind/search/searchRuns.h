#pragma once

#include "restoration/blind/search/RunResults.h"
#include "restoration/blind/search/SearchContext.h"

namespace restoration {

/// Estimates kernels in runs of different strength and size (KernelRun.h): three side by side, two
/// more at the size that these have found, and one of the size of the best in each other part of
/// the picture.
/// @throws Failure VELORN_STATUS_NO_KERNEL for pictures without edges; VELORN_STATUS_CANCELLED;
///         std::bad_alloc
RunResults searchRuns(const SearchContext& search);

/// The kernel to refine, refined (`refineKernel`) and as it is.
/// @throws as `searchRuns`
RunResults refineStart(const SearchContext& search);

} // namespace restoration
