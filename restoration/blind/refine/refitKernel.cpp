#include "restoration/blind/refine/refitKernel.h"

#include "restoration/blind/refine/displacedSystem.h"
#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/runs/KernelSolver.h"
#include "restoration/blind/runs/KernelSystem.h"
#include "restoration/blind/runs/LatentGradients.h"
#include "restoration/blind/runs/pyramid.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/recentre.h"
#include "restoration/blind/squares/removeSpecks.h"

#include <algorithm>
#include <utility>

namespace restoration {
namespace {

constexpr float kLambda = 5e-4f;
/// Room for the kernel to move and to grow in each of four fits, in pixels of its side.
constexpr int kRoom = kRefitRoom / 4;
/// Deviation of the Gaussian that smooths the edges.
constexpr double kSmoothing = 0.3;

/// Weights below this share of the largest one are removed.
constexpr double kThreshold = 0.05;

/// The move that brings the centre of mass to the middle.
Displacement centringMove(const SquareKernel& kernel) {
    Displacement move;
    double sum = 0.0;
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            sum += kernel.at(y, x);
            move.right -= (x - kernel.radius()) * kernel.at(y, x);
            move.down -= (y - kernel.radius()) * kernel.at(y, x);
        }
    }
    return {std::clamp(move.right / sum, -1.0, 1.0), std::clamp(move.down / sum, -1.0, 1.0)};
}

/// Solves for the kernel with the edges smoothed by `sigma` and moved by the opposite of `move`.
class DisplacedFit {
public:
    DisplacedFit(KernelSystem system, SquareKernel start, const KernelReach& reach,
                 const Cancellation& cancellation)
        : m_system(std::move(system)), m_start(std::move(start)), m_reach(reach),
          m_solver(m_start.radius(), cancellation) {}

    /// Without specks; all zero where nothing explains the picture.
    SquareKernel at(const Displacement& move, double sigma) {
        SquareKernel kernel = m_start;
        m_solver.improve(displacedSystem(m_system, move, sigma), m_reach, 0.0, kernel);
        if (kernel.largest() > 0.0) {
            removeSpecks(kThreshold, kernel);
        }
        return kernel;
    }

    /// The move after which the centre of mass lies in the middle: cleaning moves it, therefore
    /// the kernel solved for after the first move shows what remains.
    Displacement centring() {
        const Displacement first = centringMove(m_start);
        const SquareKernel moved = at(first, 0.0);
        if (!(moved.largest() > 0.0)) {
            return first;
        }
        const Displacement second = centringMove(moved);
        return {first.right + second.right, first.down + second.down};
    }

private:
    KernelSystem m_system;
    SquareKernel m_start;
    KernelReach m_reach;
    KernelSolver m_solver;
};

/// One more fit of a kernel.
std::optional<SquareKernel> fitted(const Plane& picture, const SquareKernel& kernel, bool mayMove,
                                   const KernelBounds& bounds, ProgressMeter& progress,
                                   const Cancellation& cancellation) {
    const int radius = std::min(extentOf(kernel) + kRoom, bounds.side()) / 2;
    const int systemRadius = radius + kDisplacementReach;
    const SquareKernel start = withSide(kernel, 2 * radius + 1);
    const int length = std::max(picture.width(), picture.height());
    SquareTransform transform(
        std::max(transformSide(length, radius), powerOfTwoFrom(4 * systemRadius + 1)),
        cancellation);
    LatentGradients gradients(transform, wrappedAround(picture, transform.side(), cancellation),
                              picture.width(), picture.height());
    gradients.find(start, kLambda);
    gradients.clearMargin(std::max(radius / 2, 1) + 1);
    KernelSystem system = KernelSystems(transform).of(gradients, systemRadius);
    progress.advance();
    std::optional<SquareKernel> result;
    if (system.energy() > 0.0) {
        DisplacedFit fit(std::move(system), start,
                         {std::min(radius, bounds.width / 2), std::min(radius, bounds.height / 2)},
                         cancellation);
        SquareKernel next = fit.at(mayMove ? fit.centring() : Displacement{}, kSmoothing);
        if (next.largest() > 0.0) {
            recentre(next);
            result = std::move(next);
        }
    }
    progress.advance();
    return result;
}

/// Places a kernel between pixels, then fits it at this place.
std::optional<SquareKernel> placed(const Plane& picture, const SquareKernel& kernel,
                                   const KernelBounds& bounds, ProgressMeter& progress,
                                   const Cancellation& cancellation) {
    const auto moved = fitted(picture, kernel, true, bounds, progress, cancellation);
    return moved ? fitted(picture, *moved, false, bounds, progress, cancellation) : std::nullopt;
}

} // namespace

std::optional<SquareKernel> refitKernel(const Plane& picture, double noiseVariance,
                                        const SquareKernel& found, const KernelBounds& bounds,
                                        ProgressMeter& progress, const Cancellation& cancellation) {
    std::optional<SquareKernel> kernel = placed(picture, found, bounds, progress, cancellation);
    if (!kernel) {
        return std::nullopt;
    }
    SpectralEvidence spectrum(picture, noiseVariance, cancellation);
    if (kernel->side <= spectrum.side()) {
        spectrum.improve(*kernel);
        removeSpecks(kThreshold, *kernel);
    }
    progress.advance(kSpectrumUnits);
    return placed(picture, *kernel, bounds, progress, cancellation);
}

} // namespace restoration
