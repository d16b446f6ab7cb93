#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/planes/Plane.h"
#include "restoration/tiles/Mask.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace restoration {

/// A tile of one colour channel as the picture stores it.
struct LightPatch {
    Plane display; ///< the window at the top left, the ring joins its edges
    int width = 0; ///< of the window
    int height = 0;
    Mask known;
    bool isIncomplete = false;
    Mask counted; ///< 1 where measurements look: known pixels beyond the reach of clipped ones
    std::size_t countedPixels = 0;
};

/// The patches of a channel with the most detail, at least one where the picture has a pixel to
/// count; their tiles suit `kernel`. Fewer for larger tiles, so that restorations take about the
/// same time.
/// @throws std::bad_alloc
std::vector<LightPatch> lightPatches(const PictureReader& picture, std::size_t channel,
                                     const Kernel& kernel);

} // namespace restoration
