#pragma once

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/search/Candidate.h"
#include "restoration/blind/search/SearchContext.h"

#include <optional>

namespace restoration {

/// Objections to the first candidate of a search.
struct Judgement {
    bool isSharp = false;              ///< the picture is not blurred
    float mostConfidence = 1.0f;       ///< in any kernel, 0..1
    std::optional<Candidate> narrower; ///< better than the first candidate, which is too wide
};

/// Searches find kernels in pictures that are not blurred, too, and kernels that are too wide where
/// blurs are small. Examines whether the edges or the power spectrum of the picture contradict
/// `first`, the best candidate.
///
/// Edges (EdgeSpectrum.h) count where the kernel is small or the runs disagree, and where the
/// kernel is large, the runs disagree and the edges have lost less than it takes; the power
/// spectrum (contradictions.h) where the kernel is neither a stroke nor as large as its bounds. A
/// blur that the spectrum shows is examined by edges only.
/// @param edges of the first part
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
Judgement judgeSharpness(const Candidate& first, const EdgeSpectrum& edges,
                         const SearchContext& search);

} // namespace restoration
