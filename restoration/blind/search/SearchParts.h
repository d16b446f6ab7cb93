#pragma once

#include "restoration/blind/search/FindSettings.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The parts of a picture that kernels are looked for in: those with the most edges (edgeParts.h),
/// the one with the sharpest edges first, without values that transforms cannot take (usablePart.h)
/// and without blown lamps (fillLamps.h). Constant after construction; threads may share it.
class SearchParts {
public:
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    SearchParts(const Plane& luminance, const FindSettings& settings, Team& team);

    std::size_t count() const noexcept { return m_parts.size(); }
    /// The part that most is found in.
    const Plane& first() const noexcept { return m_parts.front(); }
    const Plane& operator[](std::size_t part) const noexcept { return m_parts[part]; }

    /// `part` for kernels of `side`: where the search chooses the part, its centre, no larger than
    /// the transforms of runs allow.
    Plane croppedFor(int side, std::size_t part = 0) const;
    /// The centre of the first part, for spectra; at most 512 pixels wide and high.
    Plane centre() const;

    /// Standard deviation of the first part's noise, in levels of 255; above 0.
    double noise() const noexcept { return m_noise; }
    /// The same as a variance on the scale of the parts, where white is 1.
    double noiseVariance() const noexcept;

private:
    bool m_isChosen;
    std::vector<Plane> m_parts;
    double m_noise;
};

} // namespace restoration
