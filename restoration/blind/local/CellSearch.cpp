#include "restoration/blind/local/CellSearch.h"

#include "restoration/blind/candidates/Evidence.h"
#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/parts/diagonalNoise.h"
#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/squares/kernelShape.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace restoration {
namespace {

/// The blur of edges below which a cell is sharp, as a variance.
constexpr double kSharpVariance = 0.4;
/// Kernels that searches find in sharp pictures. Larger ones may keep high frequencies.
constexpr int kSmallExtent = 11;

} // namespace

CellSearch::CellSearch(const Plane& part, const KernelBounds& bounds,
                       const Cancellation& cancellation)
    : m_part(part), m_bounds(bounds), m_cancellation(cancellation) {}

CellKernel CellSearch::first(const SquareKernel& whole, ProgressMeter& progress) const {
    if (!hasEdges()) {
        progress.advance(firstUnits());
        return {whole, 0.0, 0.0, false};
    }
    const KernelScorer scorer(m_part, m_bounds.side() / 2, diagonalNoise(m_part), m_cancellation);
    const auto refined =
        refineKernel(m_part, whole, m_bounds, kRefiningRun, progress, m_cancellation);
    const auto searched = runSearch(m_part, m_bounds, kPlainRun, progress, m_cancellation);
    if (!refined || !searched) {
        progress.advance(2 * scoreUnits());
        return {whole, 0.0, 0.0, false};
    }
    if (extentOf(*searched) <= kSmallExtent && hasSharpEdges()) {
        progress.advance(2 * scoreUnits());
        SquareKernel point(m_bounds.side());
        point.at(point.radius(), point.radius()) = 1.0;
        return {point, 0.0, 1.0, true};
    }
    const double agreement = likeness(*refined, *searched);
    const double ofRefined = scoreOf(scorer.of(*refined, m_cancellation));
    progress.advance(scoreUnits());
    const double ofSearched = scoreOf(scorer.of(*searched, m_cancellation));
    progress.advance(scoreUnits());
    if (ofSearched < ofRefined) {
        return {*searched, ofSearched, agreement, false};
    }
    return {*refined, ofRefined, agreement, false};
}

CellKernel CellSearch::second(const CellKernel& known, const SquareKernel& neighbours,
                              ProgressMeter& progress) const {
    if (known.isSharp || known.agreement == 0.0) {
        progress.advance(secondUnits());
        return known;
    }
    const auto refined =
        refineKernel(m_part, neighbours, m_bounds, kRefiningRun, progress, m_cancellation);
    if (!refined) {
        progress.advance(scoreUnits());
        return known;
    }
    const KernelScorer scorer(m_part, m_bounds.side() / 2, diagonalNoise(m_part), m_cancellation);
    const double score = scoreOf(scorer.of(*refined, m_cancellation));
    progress.advance(scoreUnits());
    const double agreement = std::max(known.agreement, likeness(*refined, known.kernel));
    if (score < known.score) {
        return {*refined, score, agreement, false};
    }
    return {known.kernel, known.score, agreement, false};
}

std::size_t CellSearch::firstUnits() const {
    return refinementUnits(m_part.width(), m_part.height(), m_bounds, kRefiningRun) +
           runUnits(m_part.width(), m_part.height(), m_bounds, kPlainRun) + 2 * scoreUnits();
}

std::size_t CellSearch::secondUnits() const {
    return refinementUnits(m_part.width(), m_part.height(), m_bounds, kRefiningRun) + scoreUnits();
}

/// Whether enough places differ clearly from those a few pixels away.
bool CellSearch::hasEdges() const {
    constexpr int kDistance = 4;
    constexpr float kLeastStep = 10.0f / 255.0f;
    constexpr double kLeastShare = 0.01;
    std::size_t edges = 0;
    for (int y = 0; y + kDistance < m_part.height(); ++y) {
        const float* row = m_part.row(y);
        const float* below = m_part.row(y + kDistance);
        for (int x = 0; x + kDistance < m_part.width(); ++x) {
            const float step =
                std::max(std::abs(row[x + kDistance] - row[x]), std::abs(below[x] - row[x]));
            edges += step > kLeastStep ? 1U : 0U;
        }
    }
    return static_cast<double>(edges) >
           kLeastShare * static_cast<double>(m_part.width()) * m_part.height();
}

bool CellSearch::hasSharpEdges() const {
    const EdgeSpectrum edges = edgeSpectrum(m_part, m_cancellation);
    return edges.showsEdges && edges.blurVariance < kSharpVariance;
}

/// A score takes about as much time as one and a half iterations of a run.
std::size_t CellSearch::scoreUnits() const {
    const auto side = static_cast<std::size_t>(
        transformSide(std::max(m_part.width(), m_part.height()), m_bounds.side() / 2));
    return 3 * side * side / 2;
}

} // namespace restoration
