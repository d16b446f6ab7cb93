#include "restoration/blind/local/GridSearch.h"

#include "restoration/blind/local/alignKernels.h"
#include "restoration/blind/local/cellParts.h"
#include "restoration/blind/local/meanAround.h"
#include "restoration/blind/local/QuarterStarts.h"
#include "restoration/blind/squares/squareKernelOf.h"

#include <algorithm>
#include <utility>

namespace restoration {
namespace {

/// Side of the transforms of a cell, and of a quarter of one.
constexpr int kTransformSide = 512;
constexpr int kQuarterTransformSide = 256;

/// Wider than the kernel of the whole picture, up to 47 pixels and a fifth of the picture.
KernelBounds boundsFor(const Kernel& whole, const Plane& picture) {
    constexpr int kLargestSide = 47;
    const int shorter = std::min(picture.width(), picture.height());
    const int wider = whole.largerSide() * 3 / 2 + 6;
    const int side = std::max(std::min({wider, kLargestSide, shorter / 5}) | 1, whole.largerSide());
    return {side, side};
}

} // namespace

GridSearch::GridSearch(const Plane& luminance, const Kernel& whole, Team& team)
    : m_luminance(luminance), m_team(team), m_bounds(boundsFor(whole, luminance)),
      m_kernels({cellsFor(luminance), squareKernelOf(whole, m_bounds.side()), {}}) {}

void GridSearch::find() {
    findParts(kTransformSide);
    findFirst();
    findSecond();
    alignAndSmooth(0.6);
}

void GridSearch::divide() {
    const GridKernels coarse = m_kernels;
    const std::vector<SquareKernel> smooth = std::move(m_smooth);
    m_kernels.cells = coarse.cells.divided();
    findParts(kQuarterTransformSide);
    m_team.progress().beginPhase(0.98, unitsOf([](const CellSearch& search) {
                                     return search.closerUnits(QuarterStarts::kMost);
                                 }));
    m_kernels.found.assign(m_kernels.cells.count(), {});
    m_team.forEach(m_kernels.cells.count(),
                   [&](std::size_t i, int) { m_kernels.found[i] = quarter(i, coarse, smooth); });
    alignAndSmooth(1.0);
}

void GridSearch::findParts(int transformSide) {
    const int longest = transformSide - 2 * (m_bounds.side() / 2) - 2;
    m_parts = cellParts(m_luminance, m_kernels.cells, longest, m_team);
}

void GridSearch::findFirst() {
    m_team.progress().beginPhase(
        0.4, unitsOf([](const CellSearch& search) { return search.firstUnits(); }));
    m_kernels.found.resize(m_kernels.cells.count());
    m_team.forEach(m_kernels.cells.count(), [&](std::size_t i, int) {
        m_kernels.found[i] = searchOf(i).first(m_kernels.whole, m_team.progress());
    });
}

void GridSearch::findSecond() {
    m_team.progress().beginPhase(
        0.6, unitsOf([](const CellSearch& search) { return search.secondUnits(); }));
    std::vector<CellKernel> improved(m_kernels.cells.count());
    m_team.forEach(m_kernels.cells.count(), [&](std::size_t i, int) {
        improved[i] = searchOf(i).second(m_kernels.found[i], meanAround(m_kernels, i, 0.0),
                                         m_team.progress());
    });
    m_kernels.found = std::move(improved);
}

/// The kernel of quarter `i` of the cells of `coarse`. Sharp cells have sharp quarters.
CellKernel GridSearch::quarter(std::size_t i, const GridKernels& coarse,
                               const std::vector<SquareKernel>& smooth) const {
    const CellSearch search = searchOf(i);
    const CellKernel& own = coarse.found[cellsAround(i, coarse.cells).front().cell];
    if (own.isSharp) {
        m_team.progress().advance(search.closerUnits(QuarterStarts::kMost));
        return own;
    }
    const QuarterStarts starts = startsOf(i, coarse, smooth);
    m_team.progress().advance(search.closerUnits(QuarterStarts::kMost) -
                              search.closerUnits(starts.kernels.size()));
    return search.closer(starts.kernels, starts.agreement, m_team.progress());
}

void GridSearch::alignAndSmooth(double until) {
    m_team.progress().beginPhase(until, 1);
    m_team.run([&] {
        alignKernels(m_kernels, m_team.cancellation());
        m_smooth = smoothed(m_kernels);
    });
}

CellSearch GridSearch::searchOf(std::size_t cell) const {
    return {m_parts[cell], m_bounds, m_team.cancellation()};
}

/// The sum of `units` of the searches of all cells.
template <class Units>
std::size_t GridSearch::unitsOf(const Units& units) const {
    std::size_t sum = 0;
    for (std::size_t i = 0; i < m_kernels.cells.count(); ++i) {
        sum += units(searchOf(i));
    }
    return sum;
}

} // namespace restoration
