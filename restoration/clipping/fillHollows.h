#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/tiles/Mask.h"

namespace restoration {

/// Fills the dark centres of restored lamps. What lies deep inside a clipped area leaves no trace
/// in any known pixel, and its estimate is dark: the least light that explains the rim. An unknown
/// pixel rises to the least of the four largest values that lie in its line of unknown pixels to
/// the left, to the right, above and below; a pixel that is open to one side stays as it is.
/// @param channel  a restored colour channel
/// @param known    0 at the pixels that may rise
/// @param part     the pixels of the picture
/// @param scratch  of the size of `channel`; overwritten
/// @throws Failure for a cancelled call; std::bad_alloc
void fillHollows(Plane& channel, const Mask& known, const Rect& part, Plane& scratch,
                 const Cancellation& cancellation);

} // namespace restoration
