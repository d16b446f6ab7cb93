#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/secondpass/DctFilter.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// Improves a restoration x of a blurred plane y with the prior that every 8x8 block of the sharp
/// plane has few cosine coefficients. Each step restores frequencies that the blur has kept, and
/// takes the others from the estimate (half-quadratic splitting),
///
///     z = argmin |k * z - y|^2 + weight |z - x|^2,
///
/// and cleans z with the transform filter: x = filter(z). The noise that the filter expects falls
/// from step to step, from that of a poor estimate to that of y. It is the sum of the error of x,
/// white, and of the noise of y as the division colours it. The blocks of successive steps lie at
/// different positions: few blocks are then nearly as good as blocks at every pixel.
///
/// The scheme is that of D. Zoran, Y. Weiss, From learning models of natural image patches to whole
/// image restoration, 2011, with a denoiser in the place of the prior as in S. Venkatakrishnan,
/// C. Bouman, B. Wohlberg, Plug-and-play priors for model based reconstruction, 2013.
///
/// Constant after construction, therefore shared by all threads.
class SecondPass {
public:
    /// Full takes twelve steps with blocks two pixels apart. Quick takes eight with blocks four
    /// pixels apart, in a third of the time; it gains about 0.15 dB less.
    enum class Effort { Quick, Full };

    /// The noise of a blurred plane.
    struct Noise {
        float deviation; ///< in levels of 255
        /// The noise at the value v has the variance (base + slope v) deviation^2.
        float base = 1.0f;
        float slope = 0.0f;
    };

    /// @throws std::bad_alloc
    SecondPass(const Kernel& kernel, const Noise& noise, Effort effort);

    /// @param y      the blurred plane, of the side of `blur`; unknown pixels hold an estimate
    /// @param blur   the spectrum of the same kernel
    /// @param x      a restoration of `y`; receives the improved one
    /// @throws Failure for a cancelled call; std::bad_alloc
    void improve(const Plane& y, const BlurSpectrum& blur, Plane& x, TileScratch& scratch,
                 DctFilter& filter, const Cancellation& cancellation) const;

private:
    struct Step {
        float weight;
        DctNoise noise; ///< of z
        BlockLattice lattice;
    };

    std::vector<Step> m_steps;
    float m_firstShare; ///< of the restoration that enters, in the result
};

} // namespace restoration
