#pragma once

#include "restoration/clipping/ClipDetector.h"
#include "restoration/clipping/clippedValues.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/light/ToneCurves.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/tiles/Mask.h"

#include <span>
#include <vector>

namespace restoration {

/// Finds the pixels of a picture that hide light above white: those that one of its colour channels
/// clipped. Const functions may run on any number of threads.
class PictureClipping {
public:
    /// @param values    which values of the picture are clipped
    /// @param kernels   one for all colour channels, or one for each
    /// @param channels  of the picture, without alpha
    /// @param noise     of the picture, as stored
    /// @param light     the curves that were undone in the planes to search; null: none
    /// @throws std::bad_alloc
    PictureClipping(const ClippedValues& values, std::span<const Kernel* const> kernels,
                    std::size_t channels, const NoiseLevels& noise, const ToneCurves* light);

    /// Marks the pixels of `part` that hide light, and their surroundings, as unknown.
    /// @param channels  a plane for each colour channel
    /// @return whether there are any
    /// @throws std::bad_alloc
    bool mark(std::span<const Plane> channels, const Rect& part, Mask& known) const;

    /// The stored value of clipped pixels.
    float white() const noexcept { return m_white; }

private:
    float m_white;
    std::vector<ClipDetector> m_detectors;
};

} // namespace restoration
