#pragma once

#include "restoration/clipping/WhiteNeighbours.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/tiles/Mask.h"

#include <cstdint>
#include <vector>

namespace restoration {

/// Where the values of a channel are clipped, in the scale of the restored planes.
struct ClipLevel {
    float white; ///< the largest value that the channel can have
    float least; ///< values from here on are clipped
    float noise; ///< standard deviation of the noise near white
};

/// Finds the pixels of a channel whose light exceeds what the picture can store.
///
/// White paper is not clipped: restored light stays within the range there, and treating it as
/// unknown would lose the edges of the print. Clipped pixels count as hiding light where a
/// neighbour is darker than the kernel allows beside white (`WhiteNeighbours`), and up to half a
/// kernel from there along clipped pixels, because a lamp's blurred image is clipped as a whole.
/// Const functions may run on any number of threads.
class ClipDetector {
public:
    /// @throws std::bad_alloc
    ClipDetector(const Kernel& kernel, const ClipLevel& level);

    /// Marks the pixels of `part` that hide light, and those within a distance of the root of 5
    /// around them, as unknown. Pixels beyond `part` are not looked at.
    /// @param channel  values of the channel; `part` lies inside
    /// @param known    of the same sides
    /// @return the number of pixels that hide light
    /// @throws std::bad_alloc
    std::size_t mark(const Plane& channel, const Rect& part, Mask& known) const;

private:
    bool isClipped(float value) const noexcept { return value >= m_level.least; }
    bool hidesLight(const Plane& channel, const Rect& part, int x, int y) const noexcept;
    std::vector<std::uint32_t> brightPixels(const Plane& channel, const Rect& part) const;

    ClipLevel m_level;
    WhiteNeighbours m_white;
    float m_margin; ///< of a neighbour below its limit
    int m_reach;
};

} // namespace restoration
