#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>
#include <memory>

namespace vel {

/// The curve that strengthens or weakens detail: a gain, and a power that raises small amplitudes
/// and reduces large ones, or the reverse. The curve is computed at evenly spaced levels and
/// applied by a cubic lookup, therefore no pixel needs a power. An object serves one thread at a
/// time.
class CDetailCurve {
public:
    CDetailCurve();
    CDetailCurve(const CDetailCurve&) = delete;
    CDetailCurve& operator=(const CDetailCurve&) = delete;

    /// Builds the table and applies it to `plane` in place.
    ///
    /// A gain below -0.99 clears the plane. When `gain` and `gamma` are both nearer to 0 than 0.001
    /// the plane stays as it is. Otherwise the plane is cut to `lower`..`upper` and looked up.
    /// Values from the last level but one (0.468 for the bounds -0.5 and 0.5) get no gain: the last
    /// knot is built but takes no part in the lookup.
    /// @param plane detail, signed, 1.0 = full scale; a NaN stays a NaN
    /// @param gamma above 0.01 raises the amplitudes to the power 1/(1 + 2 gamma), below -0.01 to
    /// the power 1 - gamma; in between the curve is a straight line
    /// @param gain slope 1 + gain, or 1 + boost*gain for gains above 0
    /// @param knee amplitude that the power leaves unchanged, before the gain
    void apply(GIMG<float>& plane, float gamma, float gain, float knee, float lower, float upper,
               float boost);

    static constexpr std::int32_t kCount = 32;

    std::int32_t m_count = kCount;     ///< number of knots
    std::unique_ptr<float[]> m_values; ///< the curve at the levels
    std::unique_ptr<float[]> m_levels; ///< levels from the lower bound upwards

private:
    void makeLevels(float lower, float upper);
    void makeValues(float gamma, float slope, float knee);
};

} // namespace vel
