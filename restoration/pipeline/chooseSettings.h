#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/pipeline/Choices.h"
#include "restoration/threads/Team.h"
#include "restoration/tiles/TileLoader.h"
#include "velorn.h"

#include <span>

namespace restoration {

/// Chooses the settings that are automatic.
/// @param rules  how the tiles of the restoration are loaded
/// @param noise  of the values that are restored
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
Choices chooseSettings(const PictureReader& picture, const LoadRules& rules,
                       std::span<const Kernel* const> kernels, const NoiseLevels& noise,
                       const VelornRestoreSettings& settings, Team& team);

} // namespace restoration
