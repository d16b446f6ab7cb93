#pragma once

#include "restoration/blind/local/CellSearch.h"
#include "restoration/blind/local/GridKernels.h"
#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// Estimates the kernels of the cells of a picture. The cells are pieces of the team.
class GridSearch {
public:
    /// @param luminance  of the picture; outlives the search
    /// @param whole      the kernel of the whole picture, which the cells begin with
    GridSearch(const Plane& luminance, const Kernel& whole, Team& team);

    bool hasSeveralCells() const noexcept { return m_kernels.cells.count() > 1; }

    /// Estimates the kernels of the cells and aligns and smooths them. Takes 0.6 of the span of the
    /// progress meter.
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    void find();

    /// Divides each cell into four that begin with the kernels around them, and aligns and smooths
    /// the kernels of these. Takes the rest of the span.
    /// @throws as find
    void divide();

    /// The kernels of the cells, aligned.
    const GridKernels& kernels() const noexcept { return m_kernels; }
    /// The same, smoothed over neighbouring cells.
    const std::vector<SquareKernel>& smooth() const noexcept { return m_smooth; }

private:
    void findParts(int transformSide);
    void findFirst();
    void findSecond();
    CellKernel quarter(std::size_t i, const GridKernels& coarse,
                       const std::vector<SquareKernel>& smooth) const;
    void alignAndSmooth(double until);
    CellSearch searchOf(std::size_t cell) const;
    template <class Units>
    std::size_t unitsOf(const Units& units) const;

    const Plane& m_luminance;
    Team& m_team;
    KernelBounds m_bounds;
    GridKernels m_kernels;
    std::vector<SquareKernel> m_smooth;
    std::vector<Plane> m_parts; ///< that the cells look at
};

} // namespace restoration
