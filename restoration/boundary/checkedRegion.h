#pragma once

#include "velorn.h"

namespace restoration {

/// The region of the settings, or the whole of `picture`, which has passed checkPicture, where its
/// width is 0.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for regions that are not inside of the picture
VelornRegion checkedRegion(const VelornRegion& region, const VelornPicture& picture);

} // namespace restoration
