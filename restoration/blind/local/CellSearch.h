#pragma once

#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/local/CellKernel.h"
#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/threads/ProgressMeter.h"

#include <cstddef>
#include <span>

namespace restoration {

/// Estimates the kernel of one cell of a picture on the calling thread. Constant; threads may share
/// it.
class CellSearch {
public:
    /// @param part    luminance of the cell and its surroundings, finite, about 0..1; outlives
    ///                the search
    /// @param bounds  of the kernels
    CellSearch(const Plane& part, const KernelBounds& bounds, const Cancellation& cancellation);

    /// The better one of the kernel refined from `whole`, the kernel of the whole picture, and one
    /// that a search from coarse to fine finds, both fitted again (refitKernel.h). Without edges it
    /// is `whole`.
    /// @param progress advances by `firstUnits`
    CellKernel first(const SquareKernel& whole, ProgressMeter& progress) const;

    /// The kernel refined from that of the neighbours and fitted again if it explains the cell
    /// better than `known`.
    /// @param progress advances by `secondUnits`
    CellKernel second(const CellKernel& known, const SquareKernel& neighbours,
                      ProgressMeter& progress) const;

    /// The one of `starts`, or the kernel refined from it, that explains the cell best; the first
    /// one without edges.
    /// @param agreement of the result
    /// @param progress advances by `closerUnits`
    CellKernel closer(std::span<const SquareKernel> starts, double agreement,
                      ProgressMeter& progress) const;

    std::size_t firstUnits() const;
    std::size_t closerUnits(std::size_t starts) const;
    std::size_t secondUnits() const;

private:
    bool hasEdges() const;
    bool hasSharpEdges() const;
    bool contradicts(const SquareKernel& kernel) const;
    double noiseDeviation() const;
    CellKernel withEvidence(const SquareKernel& kernel, double agreement,
                            const KernelScorer& scorer) const;
    CellKernel fitted(const SquareKernel& kernel, double agreement, const KernelScorer& scorer,
                      ProgressMeter& progress) const;
    std::size_t fitUnits() const;
    std::size_t scoreUnits() const;

    const Plane& m_part;
    KernelBounds m_bounds;
    const Cancellation& m_cancellation;
};

} // namespace restoration
