#pragma once

#include "hosts/command/commands/BlindSettings.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/terminal/Interrupt.h"
#include "velorn.hpp"

#include <filesystem>
#include <ostream>

namespace velorn {

/// Finds the kernel of a picture, with a progress bar on `terminal` if `isTerminal`. Warns on
/// `terminal` when a restoration with the kernel may be worse than the picture. `settings.largest`
/// refers to the picture as displayed, the kernel to its rows and columns as stored. `path` is the
/// name of the picture in messages.
/// @throws Failure that names `path`, Interrupted.
api::Kernel searchKernel(const ImageFile& picture, const std::filesystem::path& path,
                         const BlindSettings& settings, const Interrupt& interrupt,
                         std::ostream& terminal, bool isTerminal);

} // namespace velorn
