#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/light/LightPatch.h"
#include "restoration/light/ToneCurve.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

namespace restoration {

/// How well a restoration explains a patch, in display values: sums over counted pixels.
struct Explanation {
    std::size_t pixels = 0;
    double residual = 0.0;  ///< (y - k * x)^2
    double gradients = 0.0; ///< |gx|^0.5 + |gy|^0.5 of x: the cost of the prior

    void add(const Explanation& other) noexcept {
        pixels += other.pixels;
        residual += other.residual;
        gradients += other.gradients;
    }
};

/// The working memory of one worker for trials of one tile side.
struct TrialScratch {
    /// @throws std::bad_alloc
    explicit TrialScratch(int side)
        : tile(side), blurred(side, side), restored(side, side), again(side, side) {}

    TileScratch tile;
    Plane blurred;
    Plane restored;
    Plane again; ///< the restoration, blurred again
};

/// Restorations of one patch under one model: the blur happened to light or to display values.
class LightTrial {
public:
    /// `curve` undoes the coding; null: the blur happened to display values. Patch, spectrum and
    /// curve outlive the trial.
    LightTrial(const LightPatch& patch, const BlurSpectrum& blur, const ToneCurve* curve)
        : m_patch(patch), m_blur(blur), m_curve(curve) {}

    /// Copies the blurred plane, in display values, and prepares it for deconvolution.
    /// @throws Failure for a cancelled call; std::bad_alloc
    void prepare(const Plane& display, TrialScratch& scratch, const Cancellation& cancellation);

    /// Restores with a strength. Leaves the display values of the restoration and of its blur in
    /// `scratch`.
    /// @param display  the plane given to `prepare`
    /// @throws Failure for a cancelled call; std::bad_alloc
    Explanation explain(const Plane& display, float strength, TrialScratch& scratch,
                        const Cancellation& cancellation) const;

private:
    Explanation sums(const Plane& display, const TrialScratch& scratch) const;

    const LightPatch& m_patch;
    const BlurSpectrum& m_blur;
    const ToneCurve* m_curve;
    Plane m_prepared;
};

} // namespace restoration
