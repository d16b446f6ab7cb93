#pragma once

#include "restoration/blind/analytic/KernelKind.h"
#include "restoration/blind/candidates/Evidence.h"
#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// A kernel that may be the result of a search.
struct Candidate {
    SquareKernel kernel;
    Evidence evidence;
    KernelKind kind; ///< the blur that the kernel is, or one that it resembles
    int extent = 0;  ///< side of the smallest centred square that holds all weights

    double score() const { return scoreOf(evidence); }
};

/// `kernel` with its evidence and the blur that it resembles. What is only known among several
/// kernels or runs is left at 0 (KernelScorer.h). Restores a picture on the calling thread.
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
Candidate candidateOf(const SquareKernel& kernel, const KernelScorer& scorer,
                      const Cancellation& cancellation);

/// The candidate with the smallest score, of at least one.
const Candidate& bestOf(const std::vector<Candidate>& candidates);

/// Sets the agreement of each candidate: its likeness with the most similar other one.
void compareCandidates(std::vector<Candidate>& candidates);

} // namespace restoration
