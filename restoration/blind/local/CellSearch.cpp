#include "restoration/blind/local/CellSearch.h"

#include "restoration/blind/candidates/contradictions.h"
#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/parts/diagonalNoise.h"
#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/refine/refitKernel.h"
#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"

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
        return {.kernel = whole};
    }
    const KernelScorer scorer(m_part, m_bounds.side() / 2, diagonalNoise(m_part), m_cancellation);
    const auto refined =
        refineKernel(m_part, whole, m_bounds, kRefiningRun, progress, m_cancellation);
    const auto searched = runSearch(m_part, m_bounds, kPlainRun, progress, m_cancellation);
    if (!refined || !searched) {
        progress.advance(firstUnits());
        return {.kernel = whole};
    }
    if (extentOf(*searched) <= kSmallExtent && hasSharpEdges()) {
        progress.advance(firstUnits());
        SquareKernel point(m_bounds.side());
        point.at(point.radius(), point.radius()) = 1.0;
        return {.kernel = point, .agreement = 1.0, .isSharp = true};
    }
    const double agreement = likeness(*refined, *searched);
    CellKernel best = fitted(*refined, agreement, scorer, progress);
    const CellKernel other = fitted(*searched, agreement, scorer, progress);
    best = other.score() < best.score() ? other : best;
    best.isContradicted = contradicts(*refined);
    return best;
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
        progress.advance(fitUnits());
        return known;
    }
    const KernelScorer scorer(m_part, m_bounds.side() / 2, diagonalNoise(m_part), m_cancellation);
    const double agreement = std::max(known.agreement, likeness(*refined, known.kernel));
    const CellKernel other = fitted(*refined, agreement, scorer, progress);
    CellKernel best = other.score() < known.score() ? other : known;
    best.agreement = agreement;
    best.evidence.agreement = agreement;
    best.isContradicted = known.isContradicted;
    return best;
}

CellKernel CellSearch::closer(std::span<const SquareKernel> starts, double agreement,
                              ProgressMeter& progress) const {
    if (!hasEdges()) {
        progress.advance(closerUnits(starts.size()));
        return {.kernel = starts.front(), .agreement = agreement};
    }
    const KernelScorer scorer(m_part, m_bounds.side() / 2, diagonalNoise(m_part), m_cancellation);
    CellKernel best = withEvidence(starts.front(), agreement, scorer);
    progress.advance(scoreUnits());
    for (const SquareKernel& start : starts.subspan(1)) {
        const CellKernel other = withEvidence(start, agreement, scorer);
        best = other.score() < best.score() ? other : best;
        progress.advance(scoreUnits());
    }
    const auto refined =
        refineKernel(m_part, best.kernel, m_bounds, kRefiningRun, progress, m_cancellation);
    if (!refined) {
        progress.advance(fitUnits());
        return best;
    }
    const CellKernel other = fitted(*refined, agreement, scorer, progress);
    return other.score() < best.score() ? other : best;
}

/// `kernel` fitted again, and the evidence for it.
CellKernel CellSearch::fitted(const SquareKernel& kernel, double agreement,
                              const KernelScorer& scorer, ProgressMeter& progress) const {
    const double noise = noiseDeviation();
    ProgressMeter uncounted; // its units are others
    const auto refitted =
        refitKernel(m_part, noise * noise, kernel, m_bounds, uncounted, m_cancellation);
    const CellKernel result =
        withEvidence(refitted ? withSide(*refitted, m_bounds.side()) : kernel, agreement, scorer);
    progress.advance(fitUnits());
    return result;
}

CellKernel CellSearch::withEvidence(const SquareKernel& kernel, double agreement,
                                    const KernelScorer& scorer) const {
    CellKernel result{.kernel = kernel, .hasEvidence = true, .agreement = agreement};
    result.evidence = scorer.of(kernel, m_cancellation);
    result.evidence.agreement = agreement;
    return result;
}

std::size_t CellSearch::firstUnits() const {
    return refinementUnits(m_part.width(), m_part.height(), m_bounds, kRefiningRun) +
           runUnits(m_part.width(), m_part.height(), m_bounds, kPlainRun) + 2 * fitUnits();
}

std::size_t CellSearch::closerUnits(std::size_t starts) const {
    return secondUnits() + starts * scoreUnits();
}

std::size_t CellSearch::scoreUnits() const {
    return fitUnits() / 6;
}

std::size_t CellSearch::secondUnits() const {
    return refinementUnits(m_part.width(), m_part.height(), m_bounds, kRefiningRun) + fitUnits();
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

/// Whether the power spectrum of the cell contradicts a kernel that is not fitted to it.
bool CellSearch::contradicts(const SquareKernel& kernel) const {
    const SquareKernel content = withSide(kernel, extentOf(kernel));
    Evidence evidence{.width = widthOf(content)};
    if (isNarrow(evidence)) {
        return false;
    }
    const double noise = noiseDeviation();
    SpectralEvidence spectrum(m_part, noise * noise, m_cancellation);
    evidence.spectralMisfit = spectrum.misfit(content);
    return spectrumContradictsBlur(evidence);
}

/// Of a luminance of 0..1.
double CellSearch::noiseDeviation() const {
    constexpr double kLevels = 255.0;
    return diagonalNoise(m_part) / kLevels;
}

bool CellSearch::hasSharpEdges() const {
    const EdgeSpectrum edges = edgeSpectrum(m_part, m_cancellation);
    return edges.showsEdges && edges.blurVariance < kSharpVariance;
}

/// A fit and a score take about as much time as ten iterations of a run.
std::size_t CellSearch::fitUnits() const {
    const auto side = static_cast<std::size_t>(
        transformSide(std::max(m_part.width(), m_part.height()), m_bounds.side() / 2));
    return 10 * side * side;
}

} // namespace restoration
