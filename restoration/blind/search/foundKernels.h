#pragma once

#include "restoration/blind/search/FoundKernel.h"
#include "restoration/blind/search/judgeSharpness.h"
#include "restoration/blind/search/RunResults.h"
#include "restoration/kernels/Kernel.h"

#include <vector>

namespace restoration {

/// The candidates of a search as its results, in the same order.
/// @param kernels of the candidates, as they are handed out
std::vector<FoundKernel> foundKernels(const RunResults& results, std::vector<Kernel> kernels);

/// Puts the kernel first that `judgement` prefers: a narrower one, or that of a point for sharp
/// pictures; not where the host wants a kernel refined. Limits the confidence in all kernels.
void revise(const Judgement& judgement, const RunResults& results, const SearchContext& search,
            std::vector<FoundKernel>& found);

} // namespace restoration
