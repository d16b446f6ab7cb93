#pragma once

#include "velorn.h"

namespace restoration {

VelornFindSettings findDefaults() noexcept;

/// The host's settings, or the defaults for null.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for a record of unknown size and values outside
///         their ranges
VelornFindSettings checkedSettings(const VelornFindSettings* settings);

} // namespace restoration
