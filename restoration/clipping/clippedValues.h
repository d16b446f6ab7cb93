#pragma once

#include "restoration/pictures/PictureReader.h"
#include "restoration/threads/Cancellation.h"

#include <optional>

namespace restoration {

/// The range of stored values that are clipped.
struct ClippedValues {
    float least;
    float white;
};

/// Which values of a picture are clipped: those that integers would round to white in 8 bits.
/// Floats have no upper end of their own. They were clipped if their largest value is at least
/// nearly white and fills a square of 2 by 2 pixels in a channel; values close to it are clipped
/// then, and otherwise none. Reads all floats of a picture of floats.
/// @return nothing when no value is clipped
/// @throws Failure for a cancelled call; std::bad_alloc
std::optional<ClippedValues> clippedValues(const PictureReader& picture,
                                           const Cancellation& cancellation);

} // namespace restoration
