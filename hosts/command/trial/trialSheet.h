#pragma once

#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/trial/TrialTile.h"

#include <string>
#include <vector>

namespace velorn {

/// Draws a sheet from which a person can pick: the picture as it is, then the tiles, each with its
/// number, its words and its remark.
/// @param unrestored the same part of the picture as it is
/// @param caption    the line below the tiles
/// @return 8-bit pixels
RgbPixels trialSheet(const RgbPixels& unrestored, const std::vector<TrialTile>& tiles,
                     const std::string& caption);

} // namespace velorn
