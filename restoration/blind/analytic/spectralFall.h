#pragma once

#include "restoration/blind/analytic/FallProfile.h"
#include "restoration/blind/analytic/PowerSpectrum.h"

namespace restoration {

/// The blur that explains how the power of a picture falls with the frequency, when it falls alike
/// in all directions.
///
/// The power of sharp pictures falls as a power of the frequency (Field: Relations between the
/// statistics of natural images and the response properties of cortical cells, 1987), which is
/// estimated with the blur. A Gaussian of the same width in eight directions distinguishes defocus
/// from motion and shake, whose spectra have no such fall.
struct SpectralFall {
    double sigma = 0.0; ///< of the Gaussian
    FallFit gaussian;
    /// Deviation of the sigmas of eight directions, over their mean.
    double spread = 0.0;
    double radius = 0.0; ///< of the best disc
    FallFit disc;
};

SpectralFall spectralFall(const PowerSpectrum& spectrum);

} // namespace restoration
