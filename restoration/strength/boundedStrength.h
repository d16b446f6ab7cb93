#pragma once

#include <algorithm>

namespace restoration {

/// Strengths of the host within bounds. Those outside make floats overflow and mean the same as the
/// bounds: nothing of the picture is followed, or all of it.
inline float boundedStrength(float strength) noexcept {
    return std::clamp(strength, 1e-3f, 1e9f);
}

} // namespace restoration
