#pragma once

#include "restoration/chroma/ChromaPrior.h"
#include "restoration/noise/NoiseLevels.h"

namespace restoration {

/// What a restoration uses where the host leaves the choice to the library. Chosen once per
/// picture, whatever the region.
struct Choices {
    NoiseLevels noise;
    float strength = 0.0f;
    ChromaPriors chroma;
    float alpha = 0.0f;
    float limit = 0.0f;
    /// The share of the restoration in the result; the rest is the picture itself.
    float share = 1.0f;
};

} // namespace restoration
