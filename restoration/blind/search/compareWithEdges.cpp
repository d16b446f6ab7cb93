#include "restoration/blind/search/compareWithEdges.h"

#include "restoration/blind/parts/excessBlur.h"
#include "restoration/blind/squares/kernelSides.h"

namespace restoration {

void compareWithEdges(const EdgeSpectrum& edges, Candidate& candidate) {
    Evidence& evidence = candidate.evidence;
    evidence.overblur = excessBlur(edges, withSide(candidate.kernel, candidate.extent));
    evidence.edgeBlur = edges.blurVariance;
    evidence.width = widthOf(candidate.kernel);
}

EdgeSpectrum compareAllWithEdges(std::vector<Candidate>& candidates, const SearchContext& search) {
    EdgeSpectrum edges;
    search.team.run([&] {
        const Cancellation& cancellation = search.team.cancellation();
        edges = edgeSpectrum(search.parts.centre(), cancellation);
        for (Candidate& candidate : candidates) {
            cancellation.check();
            compareWithEdges(edges, candidate);
        }
    });
    return edges;
}

} // namespace restoration
