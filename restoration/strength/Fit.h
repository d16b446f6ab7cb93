#pragma once

#include <cstddef>

namespace restoration {

/// How closely a restoration x = f(y) follows the blurred plane y, over the pixels looked at. All
/// sums are weighted alike, with a mean weight of 1.
struct Fit {
    std::size_t pixels = 0;
    double residual = 0.0;   ///< sum of (y - k * x)^2, in levels of 255 squared
    double divergence = 0.0; ///< sum of d (k * x)_i / d y_i: 0 follows nothing, `pixels` everything

    void add(const Fit& other) noexcept {
        pixels += other.pixels;
        residual += other.residual;
        divergence += other.divergence;
    }
};

/// What is known about the noise of a plane.
struct AssumedNoise {
    double deviation = 0.0; ///< standard deviation in levels of 255; texture may have raised it
    /// Errors of neighbouring pixels depend on each other, as after JPEG compression.
    bool isCorrelated = false;
};

/// An estimate of the mean weighted squared error of k * x, up to a constant; `fit` covers at least
/// one pixel.
///
/// The larger of two estimates: too little strength costs less than too much. Stein's estimate,
/// residual + 2 variance divergence, is exact on average for independent normal noise of known
/// variance. Generalised cross-validation, residual / (1 - divergence)^2, does not know the noise.
/// Residual and divergence are means per pixel.
///
/// The residual itself shows how much noise there can be; a variance far above that comes from
/// texture and is limited. Correlated errors are followed more closely than independent noise, to
/// which both estimates are blind; a higher variance makes up for it.
///
/// C. Stein, Estimation of the mean of a multivariate normal distribution, Annals of Statistics
/// 1981; G. H. Golub, M. Heath, G. Wahba, Generalized cross-validation as a method for choosing a
/// good ridge parameter, Technometrics 1979.
double riskOf(const Fit& fit, const AssumedNoise& noise) noexcept;

} // namespace restoration
