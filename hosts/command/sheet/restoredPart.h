#pragma once

#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/PictureArea.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/terminal/Interrupt.h"
#include "velorn.hpp"

#include <filesystem>

namespace velorn {

/// A part of a picture that was restored.
struct RestoredPart {
    /// As displayed, upright and with 8 bits, without alpha; grey as three equal channels.
    RgbPixels pixels;
    VelornRestoreReport report;
};

/// Restores a part of a picture as a restoration of the whole picture does: automatic settings look
/// at the whole picture.
/// @param path     name of the picture in messages
/// @param area     in the stored picture
/// @param kernel   for the rows and columns as stored
/// @param settings without region and profile
/// @throws Failure that names the picture, Interrupted
RestoredPart restoredPart(const ImageFile& picture, const std::filesystem::path& path,
                          const PictureArea& area, const api::Kernel& kernel,
                          VelornRestoreSettings settings, const Interrupt& interrupt,
                          const api::Progress& progress);

} // namespace velorn
