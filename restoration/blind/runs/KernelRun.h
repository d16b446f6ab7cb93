#pragma once

#include "restoration/blind/runs/KernelSolver.h"
#include "restoration/blind/squares/KernelBounds.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/threads/ProgressMeter.h"

#include <cstddef>
#include <optional>

namespace restoration {

/// How a run weighs edges.
struct RunSettings {
    float firstLambda = 0.0f; ///< weight of the kept gradients at the coarsest level
    float lastLambda = 0.0f;  ///< the same at full size; geometric in between
    int iterations = 0;       ///< for each level
    double threshold = 0.0;   ///< weights below this share of the largest one are removed
    /// Deviation of the Gaussian that smooths the edges of the last iteration; 0: they stay sharp
    double smoothing = 0.0;
    /// Price of the kernel's weights (KernelSolver.h): removes the weak weights that lost edges
    /// make along the directions of the picture's edges
    double sparsity = 0.0;
    /// The kernel's side at the coarsest level, about. Small ones are found in a picture of few
    /// pixels, and errors made there remain.
    double coarsestSide = 7.0;
};

inline constexpr RunSettings kPlainRun{4e-3f, 5e-4f, 5, 0.05, 0.0, 0.0};
inline constexpr RunSettings kStrongRun{1e-2f, 5e-4f, 8, 0.05, 0.0, 0.01};
/// With the strongest edges only, at full size as well.
inline constexpr RunSettings kFewEdgesRun{1e-2f, 1.5e-3f, 8, 0.05, 0.0, 0.01};
/// With weak edges too, for pictures without strong ones.
inline constexpr RunSettings kWeakEdgesRun{2e-3f, 1e-4f, 8, 0.05, 0.0, 0.01};
inline constexpr RunSettings kStrongestRun{2e-2f, 5e-4f, 8, 0.08, 0.0, 0.0};
/// For the largest kernels, where lost edges do the most harm.
inline constexpr RunSettings kLargeRun{1e-2f, 5e-4f, 8, 0.05, 0.0, 0.02};
/// Of refinements.
inline constexpr RunSettings kRefiningRun{7e-4f, 5e-4f, 5, 0.05, 0.0, 0.0};

/// The work of a run, in units of progress.
std::size_t runUnits(int width, int height, const KernelBounds& bounds,
                     const RunSettings& settings);

/// One run of the search on the calling thread: estimates the kernel of `picture` from coarse to
/// fine on a pyramid of ratio sqrt(1/2). Each iteration finds the edges of the sharp picture
/// (LatentGradients), then the kernel that explains the blurred gradients by them (KernelSolver).
///
/// @param picture  luminance, finite, about 0..1; wider and higher than the bounds
/// @param progress advances by `runUnits`
/// @returns a centred kernel of sum 1 and side bounds.side(); nothing when the picture has no edges
/// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
std::optional<SquareKernel> runSearch(const Plane& picture, const KernelBounds& bounds,
                                      const RunSettings& settings, ProgressMeter& progress,
                                      const Cancellation& cancellation);

/// The two finest levels of such a run, begun at `start`, a kernel of any side, instead of a search
/// from coarse to fine. `progress` advances by `refinementUnits`.
std::optional<SquareKernel> refineKernel(const Plane& picture, const SquareKernel& start,
                                         const KernelBounds& bounds, const RunSettings& settings,
                                         ProgressMeter& progress, const Cancellation& cancellation);

std::size_t refinementUnits(int width, int height, const KernelBounds& bounds,
                            const RunSettings& settings);

/// The side of the transform for a picture whose larger side is `length`, with kernels of `radius`.
int transformSide(int length, int radius) noexcept;

} // namespace restoration
