#pragma once

#include "velorncore10.h"

namespace vel {

/// Converts host rows of three interleaved elements from the source profile to the target profile,
/// in place, like `iccTransformDisplayRows` (bridge/IccTransform.h): 8 bits each, or 16 bits on the
/// 15-bit scale. Sixteen-bit elements are limited to 32767 and doubled before the transform and
/// halved after it, therefore white, 32768, becomes at most 32767. Rows may start at any address.
/// @return 1 when done, or if both pointers are null or both sizes are below 1; 0 if a profile
///         cannot be read. If the transform cannot be created, the rows are unchanged and the
///         result is 0 for 8 bits and 1 for 16.
/// @throws std::bad_alloc
int32_t iccTransformHostRows(const PSProfilesRecord& profiles, void* data, bool is8, int32_t step,
                             int32_t width, int32_t height);

} // namespace vel
