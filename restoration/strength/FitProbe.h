#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/strength/ErrorWeights.h"
#include "restoration/strength/Fit.h"
#include "restoration/strength/ProbeScratch.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/tiles/samplePatches.h"

#include <cstddef>
#include <cstdint>

namespace restoration {

/// Measures how closely restorations of one plane of a patch follow it.
///
/// The divergence is measured by Monte Carlo: the plane is restored with and without a disturbance
/// of half a level with random signs e, which gives the sum of e . (change of k * x) per level
/// (S. Ramani, T. Blu, M. Unser, Monte-Carlo SURE, IEEE Transactions on Image Processing 2008).
/// Residual and change are weighed by `ErrorWeights`. All strengths see the same signs, therefore
/// the estimate is a smooth function of the strength.
///
/// Unknown pixels are estimated once. They do not change with the strength or the disturbance, and
/// the pixels looked at are not among them.
class FitProbe {
public:
    /// What a probe needs to know about the kernel; outlives the probe.
    struct Model {
        /// `blurSpectrum` outlives the model.
        /// @throws std::bad_alloc
        explicit Model(const BlurSpectrum& blurSpectrum)
            : blur(blurSpectrum), weights(blurSpectrum) {}

        const BlurSpectrum& blur;
        ErrorWeights weights;
    };

    /// Copies plane `plane` of the patch and estimates its unknown pixels. `seed` determines the
    /// signs. `patch` has the side of the model.
    /// @throws Failure for a cancelled call; std::bad_alloc
    FitProbe(const Patch& patch, std::size_t plane, const Model& model, std::uint64_t seed,
             ProbeScratch& scratch, const Cancellation& cancellation);

    /// Restores the plane twice. `scratch` may be another one than the constructor's.
    /// @throws Failure for a cancelled call; std::bad_alloc
    Fit measure(const HyperLaplacian& prior, ProbeScratch& scratch,
                const Cancellation& cancellation);

private:
    void drawSigns(const Patch& patch, std::uint64_t seed);
    /// difference = a - b at the pixels looked at, 0 elsewhere.
    void subtractKept(const Plane& a, const Plane& b, Plane& difference) const;

    const Model& m_model;
    Plane m_y;
    Plane m_signs;         ///< -1 or 1 at the pixels looked at, 0 elsewhere
    Plane m_weightedSigns; ///< the same, filtered
    double m_scale = 0.0;  ///< the mean weight
    std::size_t m_pixels = 0;
};

} // namespace restoration
