#pragma once

#include "restoration/pictures/PictureReader.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Team.h"

namespace restoration {

/// The luminance of a picture: its only colour channel, the luminance of ITU-R BT.601 of three, the
/// mean of two or four. 1.0 = white.
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
Plane luminancePlane(const PictureReader& picture, Team& team);

} // namespace restoration
