#pragma once

#include "hosts/command/commands/Options.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn deblur`: reads the picture, restores it and writes the result in one step at the
/// end. `terminal` is stderr; the progress bar shows there when `isTerminal`.
/// @throws Failure naming the file, Interrupted. Either way the output is as it was before.
void runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal);

} // namespace velorn
