#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/pipeline/Choices.h"
#include "restoration/work/Team.h"
#include "velorn.h"

#include <span>

namespace restoration {

/// Measures the noise of a picture and chooses the settings that are automatic.
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
Choices chooseSettings(const PictureReader& picture, std::span<const Kernel* const> kernels,
                       const VelornRestoreSettings& settings, Team& team);

} // namespace restoration
