#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>
#include <memory>

namespace vel {

/// The curve that strengthens or weakens detail: a gain, and a power that lifts small amplitudes
/// and holds large ones back, or the reverse. It is built at evenly spread levels and applied by a
/// cubic lookup, so that no power is taken per pixel.
///
/// One table serves a whole call. Callers on several threads may share it as long as they pass the
/// same settings: each rebuilds the same table.
class CDetailCurve {
public:
    CDetailCurve();
    CDetailCurve(const CDetailCurve&) = delete;
    CDetailCurve& operator=(const CDetailCurve&) = delete;

    /// Builds the table and applies it to `plane` in place.
    ///
    /// A gain below -0.99 clears the plane, and one that is, like `gamma`, nearer to 0 than 0.001
    /// leaves it as it is. Otherwise the plane is cut to `lower`..`upper` and looked up. Values
    /// from the last but one level on (0.468 for the bounds -0.5 and 0.5) get no gain: the last
    /// knot is built but does not take part.
    /// @param plane detail, signed, 1.0 = full scale; NaN stays
    /// @param gamma above 0.01 takes the amplitudes to the power 1/(1 + 2 gamma), below -0.01 to
    /// the power 1 - gamma; in between the curve is a straight line
    /// @param gain slope 1 + gain, or 1 + boost*gain for gains above 0
    /// @param knee the amplitude that the power leaves alone, before the gain
    void apply(GIMG<float>& plane, float gamma, float gain, float knee, float lower, float upper,
               float boost);

    static constexpr std::int32_t kCount = 32;

    std::int32_t m_count = kCount;     ///< knots
    std::unique_ptr<float[]> m_values; ///< what the levels become
    std::unique_ptr<float[]> m_levels; ///< from the lower bound upwards
};

} // namespace vel
