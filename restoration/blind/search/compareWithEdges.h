#pragma once

#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/search/Candidate.h"
#include "restoration/blind/search/SearchContext.h"

#include <vector>

namespace restoration {

/// Sets what the spectrum of the edges says about `candidate`.
void compareWithEdges(const EdgeSpectrum& edges, Candidate& candidate);

/// The same for all `candidates` and the edges in the first part's centre.
/// @returns the spectrum of the edges
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
EdgeSpectrum compareAllWithEdges(std::vector<Candidate>& candidates, const SearchContext& search);

} // namespace restoration
