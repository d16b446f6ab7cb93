#pragma once

#include "restoration/noise/NoiseLevels.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/threads/Team.h"
#include "velorn.h"

namespace restoration {

/// The measured noise of a picture; the host's value replaces that of the luminance.
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
NoiseLevels pictureNoise(const PictureReader& picture, const VelornRestoreSettings& settings,
                         Team& team);

} // namespace restoration
