#pragma once

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// The expected error of a chroma plane as a function of the weight of its prior.
///
/// The quadratic restoration (`deconvolveQuadratic`) is a filter: with the gain
/// h = |K|^2 / (|K|^2 + weight |D|^2) of the blurred restoration and white noise of variance s^2,
/// Stein's unbiased estimate of the blurred restoration's squared error is, but for a constant,
///
///     mean over frequencies of (1 - h)^2 |Y|^2 + 2 s^2 h
///
/// (C. Stein, Estimation of the mean of a multivariate normal distribution, Annals of Statistics
/// 1981). h depends on |D|^2 / |K|^2 alone, therefore the energies are kept in a histogram of that
/// quotient, eight bins to an octave, and a weight costs a sum over its bins.
///
/// The sums are in double and in a fixed order: the same planes added in the same order give the
/// same choice.
class ChromaRisk {
public:
    /// @throws std::bad_alloc
    ChromaRisk();

    /// Adds the spectrum of a blurred plane. Planes added to one object have the same side.
    /// @param knownShare  share of pixels that show the picture and its noise, above 0; the others
    ///                    are taken for explained by the restoration: the risk is that of a known
    ///                    pixel
    /// @throws Failure for a cancelled call; std::bad_alloc
    void add(const Plane& y, double knownShare, const BlurSpectrum& blur, TileScratch& scratch,
             const Cancellation& cancellation);
    /// Adds all planes of `other`.
    void add(const ChromaRisk& other) noexcept;

    /// The risk, summed over the planes; 1.0 = white, squared.
    /// @param noise  variance of the noise
    double risk(double weight, double noise) const noexcept;

    /// The variance of the noise in the gradients of the quadratic restoration, both components
    /// together; the mean over the planes.
    /// @param noise  variance of the noise of the blurred planes
    double gradientNoise(double weight, double noise) const noexcept;

private:
    /// Sums over frequencies, each divided by the number of pixels of a plane.
    struct Sum {
        double count = 0;
        double energy = 0;
    };

    void countSpectrum(const float* spectrum, double energyFactor, const BlurSpectrum& blur,
                       const Cancellation& cancellation);
    void countFirstLane(const float* y, const float* k, int frequency,
                        const std::vector<double>& powers, double energyFactor) noexcept;
    void countSlot(const float* y, const float* k, double differencePower,
                   double energyFactor) noexcept;
    void count(double kernelPower, double differencePower, double energy,
               double frequencies) noexcept;

    std::vector<Sum> m_byQuotient;
    double m_planes = 0;
    double m_pixels = 1;
};

} // namespace restoration
