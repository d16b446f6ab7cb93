#pragma once

#include <array>

namespace restoration {

/// How a chroma plane is restored. Chosen once per picture, because parts of a picture must be
/// restored alike.
struct ChromaPrior {
    float weight = 0.0f; ///< of the squared gradients; above 0, higher values restore less
    /// Variance of the noise that the quadratic restoration of that weight leaves in a gradient,
    /// the sum of both components; 1.0 = white.
    float gradientNoise = 0.0f;
};

/// Blue and red chroma.
using ChromaPriors = std::array<ChromaPrior, 2>;

} // namespace restoration
