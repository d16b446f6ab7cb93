#pragma once

#include "hosts/command/commands/Options.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn preview`: writes what a host shows of a picture through the library's display
/// exports. `terminal` is stderr, for the warning that the picture's own profile cannot be used.
/// @throws Failure naming the file, Interrupted. Either way the output is as it was before.
void runPreview(const PreviewOptions& options, const Interrupt& interrupt, std::ostream& terminal);

} // namespace velorn
