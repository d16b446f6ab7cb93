#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/pipeline/Choices.h"
#include "velorn.h"

#include <span>

namespace restoration {

/// Chooses the settings that are automatic.
/// @param noise  of the values that are restored
Choices chooseSettings(const NoiseLevels& noise, std::span<const Kernel* const> kernels,
                       const VelornRestoreSettings& settings);

} // namespace restoration
