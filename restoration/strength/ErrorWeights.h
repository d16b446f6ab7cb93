#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/base/AlignedFloats.h"

namespace restoration {

/// A filter that turns errors of the blurred restoration towards those of the restoration itself.
///
/// The errors of x cannot be estimated from y, those of k * x can; but a blur hides the noise that
/// a strong deconvolution amplifies. The filter weighs each frequency by 1 / (|K|^2 + 0.03): errors
/// count as they do in x, as far as the blur leaves something of them.
class ErrorWeights {
public:
    /// @throws std::bad_alloc
    explicit ErrorWeights(const BlurSpectrum& blur);

    /// weighted = the filtered `errors`; another plane.
    /// @throws Failure for a cancelled call; std::bad_alloc
    void apply(const Plane& errors, Plane& weighted, TileScratch& scratch,
               const Cancellation& cancellation) const;

private:
    const vel::RealFft2D& m_fft;
    vel::AlignedFloats m_gains; ///< of each float of a half spectrum
};

} // namespace restoration
