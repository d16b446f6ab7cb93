#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/planes/Rect.h"
#include "restoration/threads/Team.h"

#include <vector>

namespace restoration {

/// Puts the part with the sharpest edges (EdgeSpectrum.h) first: what is out of focus there is not
/// blurred by the camera's motion alone. The first part stays where no other is clearly sharper;
/// parts without visible edges stay behind. The others keep their order.
/// @throws std::bad_alloc; Failure VELORN_STATUS_CANCELLED
std::vector<Rect> sharpestFirst(const Plane& luminance, std::vector<Rect> parts, Team& team);

} // namespace restoration
