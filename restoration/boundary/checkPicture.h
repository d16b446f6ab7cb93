#pragma once

#include "velorn.h"

#include <string>

namespace restoration {

/// Checks a picture: sides, channels, samples and rows. `name` is what the host calls it.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT
void checkPicture(const VelornPicture* picture, const std::string& name);

/// Checks the target of a restoration that has these sides. `source` has passed checkPicture.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT
void checkTarget(const VelornPicture* target, const VelornPicture& source, std::int32_t width,
                 std::int32_t height);

} // namespace restoration
