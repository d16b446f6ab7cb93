#include "restoration/blind/runs/KernelRun.h"

#include "restoration/blind/runs/KernelSystem.h"
#include "restoration/blind/runs/LatentGradients.h"
#include "restoration/blind/runs/pyramid.h"
#include "restoration/blind/runs/startingKernel.h"
#include "restoration/blind/squares/recentre.h"
#include "restoration/blind/squares/removeSpecks.h"
#include "restoration/blind/squares/resampled.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace restoration {
namespace {

constexpr double kRatio = std::numbers::sqrt2 / 2.0;
/// Edges for each column of the kernel and each row of the picture.
constexpr double kEnoughEdges = 0.5;
constexpr int kMostHalvings = 12;
/// The level at which a refinement begins.
constexpr int kRefinedLevel = 1;
/// Keeps gradients of 0.03 levels of 255: weaker ones are rounding errors of the transforms.
constexpr float kLeastLambda = 1e-7f;

int levelCount(int side, double coarsestSide) {
    const double levels = std::log(coarsestSide / side) / std::log(kRatio);
    return std::max(1, static_cast<int>(std::ceil(levels)));
}

double scaleOf(int level) {
    return std::pow(kRatio, level);
}

/// Half the side of a kernel of `side`, reduced to `scale`.
int reducedRadius(int side, double scale) {
    return std::max(1, static_cast<int>(std::floor(side * scale + 0.5)) / 2);
}

/// What a run does at one size of the picture.
class RunLevel {
public:
    RunLevel(const Plane& picture, double scale, const KernelBounds& bounds,
             const Cancellation& cancellation)
        : RunLevel(reduced(picture, scale, cancellation), reducedRadius(bounds.side(), scale),
                   {reducedRadius(bounds.width, scale), reducedRadius(bounds.height, scale)},
                   cancellation) {}

    /// One iteration. Lowers `lambda` while too few edges are kept.
    /// @param smoothing of the edges; that of the settings holds for the last iteration only
    /// @returns whether there are edges; `kernel` is unchanged without
    bool improve(float& lambda, const RunSettings& settings, double smoothing,
                 SquareKernel& kernel) {
        findEdges(lambda, kernel);
        if (smoothing > 0.0) {
            m_gradients.smooth(smoothing, m_cancellation);
        }
        m_gradients.clearMargin(std::max(m_radius / 2, 1) + 1);
        const KernelSystem system = m_systems.of(m_gradients, m_radius);
        if (!(system.energy() > 0.0)) {
            return false;
        }
        SquareKernel next = kernel;
        m_solver.improve(system, m_reach, settings.sparsity, next);
        if (!(next.largest() > 0.0)) {
            return false;
        }
        removeSpecks(settings.threshold, next);
        recentre(next);
        kernel = std::move(next);
        return true;
    }

private:
    RunLevel(const Plane& level, int radius, KernelReach reach, const Cancellation& cancellation)
        : m_cancellation(cancellation), m_radius(radius), m_reach(reach),
          m_transform(transformSide(std::max(level.width(), level.height()), radius), cancellation),
          m_gradients(m_transform, wrappedAround(level, m_transform.side(), cancellation),
                      level.width(), level.height()),
          m_systems(m_transform), m_solver(radius, cancellation) {}

    void findEdges(float& lambda, const SquareKernel& kernel) {
        const double area = static_cast<double>(m_gradients.width()) * m_gradients.height();
        const double enough = kEnoughEdges * kernel.side * std::sqrt(area);
        for (int i = 0; i < kMostHalvings; ++i) {
            const auto kept = static_cast<double>(m_gradients.find(kernel, lambda));
            if (kept >= enough || lambda <= kLeastLambda) {
                return;
            }
            lambda *= 0.5f;
        }
    }

    const Cancellation& m_cancellation;
    int m_radius;
    KernelReach m_reach;
    SquareTransform m_transform;
    LatentGradients m_gradients;
    KernelSystems m_systems;
    KernelSolver m_solver;
};

/// The work of one iteration of a level, in units of progress: its pixels, padding included.
std::size_t iterationUnits(int length, const KernelBounds& bounds, double scale) {
    const auto side = static_cast<std::size_t>(
        transformSide(static_cast<int>(length * scale), reducedRadius(bounds.side(), scale)));
    return side * side;
}

/// The work of the levels from `coarsest` to full size.
std::size_t levelUnits(int length, const KernelBounds& bounds, const RunSettings& settings,
                       int coarsest) {
    std::size_t units = 0;
    for (int l = coarsest; l >= 0; --l) {
        units += iterationUnits(length, bounds, scaleOf(l));
    }
    return units * static_cast<std::size_t>(settings.iterations);
}

/// The weight of the kept gradients at `level`.
float lambdaAt(int level, int coarsest, const RunSettings& settings) {
    const double share = static_cast<double>(coarsest - level) / coarsest;
    return static_cast<float>(settings.firstLambda *
                              std::pow(settings.lastLambda / settings.firstLambda, share));
}

int sideAt(int level, const KernelBounds& bounds) {
    return 2 * reducedRadius(bounds.side(), scaleOf(level)) + 1;
}

/// Runs the levels from `coarsest` (at least 1) to full size, beginning with `kernel`, which has
/// the side of the coarsest one.
std::optional<SquareKernel> runLevels(const Plane& picture, SquareKernel kernel,
                                      const KernelBounds& bounds, const RunSettings& settings,
                                      int coarsest, ProgressMeter& progress,
                                      const Cancellation& cancellation) {
    const int length = std::max(picture.width(), picture.height());
    bool hasSeenEdges = false;
    for (int l = coarsest; l >= 0; --l) {
        RunLevel level(picture, scaleOf(l), bounds, cancellation);
        if (l < coarsest) {
            kernel = resampled(kernel, sideAt(l, bounds), kRatio);
        }
        float lambda = lambdaAt(l, coarsest, settings);
        for (int i = 0; i < settings.iterations; ++i) {
            const bool isLast = l == 0 && i + 1 == settings.iterations;
            hasSeenEdges =
                level.improve(lambda, settings, isLast ? settings.smoothing : 0.0, kernel);
            progress.advance(iterationUnits(length, bounds, scaleOf(l)));
        }
    }
    return hasSeenEdges ? std::optional(kernel) : std::nullopt;
}

} // namespace

int transformSide(int length, int radius) noexcept {
    return std::max(powerOfTwoFrom(length + 2 * radius + 2), 32);
}

std::size_t runUnits(int width, int height, const KernelBounds& bounds,
                     const RunSettings& settings) {
    return levelUnits(std::max(width, height), bounds, settings,
                      levelCount(bounds.side(), settings.coarsestSide));
}

std::optional<SquareKernel> runSearch(const Plane& picture, const KernelBounds& bounds,
                                      const RunSettings& settings, ProgressMeter& progress,
                                      const Cancellation& cancellation) {
    const int coarsest = levelCount(bounds.side(), settings.coarsestSide);
    return runLevels(picture, startingKernel(sideAt(coarsest, bounds)), bounds, settings, coarsest,
                     progress, cancellation);
}

std::size_t refinementUnits(int width, int height, const KernelBounds& bounds,
                            const RunSettings& settings) {
    return levelUnits(std::max(width, height), bounds, settings, kRefinedLevel);
}

std::optional<SquareKernel> refineKernel(const Plane& picture, const SquareKernel& start,
                                         const KernelBounds& bounds, const RunSettings& settings,
                                         ProgressMeter& progress,
                                         const Cancellation& cancellation) {
    const double pitch = 1.0 / scaleOf(kRefinedLevel);
    return runLevels(picture, resampled(start, sideAt(kRefinedLevel, bounds), pitch), bounds,
                     settings, kRefinedLevel, progress, cancellation);
}

} // namespace restoration
