#pragma once

#include "hosts/command/commands/DeblurOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn deblur`: reads the picture, restores it and replaces the output in a single step.
/// `terminal` is stderr; it shows a progress bar if `isTerminal`.
/// @throws Failure that names the file, Interrupted. The output is then unchanged.
void runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal);

} // namespace velorn
