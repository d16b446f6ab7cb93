#pragma once

#include "restoration/blind/findKernel.h"
#include "velorn.h"

namespace restoration {

VelornFindSettings findDefaults() noexcept;

/// The host's settings, or the defaults for null, for a search in `picture`.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for a record of unknown size and values outside
///         their ranges
VelornFindSettings checkedSettings(const VelornFindSettings* settings,
                                   const VelornPicture& picture);

/// What settings that have been checked ask for.
FindSettings searchOf(const VelornFindSettings& settings) noexcept;

} // namespace restoration
