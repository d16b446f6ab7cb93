#pragma once

#include "velorn.h"

namespace restoration {

VelornRestoreSettings restoreDefaults() noexcept;

/// The host's settings, or the defaults for null, for a restoration of `source`. The region is that
/// of the whole source where the host sets none.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for a record of unknown size and values outside
///         their ranges
VelornRestoreSettings checkedSettings(const VelornRestoreSettings* settings,
                                      const VelornPicture& source);

} // namespace restoration
