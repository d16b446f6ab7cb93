#pragma once

#include "hosts/command/options/PreviewOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn preview`: writes what a host displays of a picture with the library's display
/// exports. `terminal` is stderr; it shows a warning when the picture's own profile cannot be used.
/// @throws Failure that names the file, Interrupted. The output is then unchanged.
void runPreview(const PreviewOptions& options, const Interrupt& interrupt, std::ostream& terminal);

} // namespace velorn
