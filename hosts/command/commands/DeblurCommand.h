#pragma once

#include "hosts/command/options/DeblurOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn deblur`: reads each picture, restores it and replaces its output in a single step.
/// `terminal` is stderr; it shows a progress bar if `isTerminal`.
/// @returns the exit status
/// @throws Failure that names the file when a single picture fails, UsageFailure when the outputs
///         of many cannot be written as named, Interrupted. The output of a picture that fails is
///         unchanged.
int runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
              bool isTerminal);

} // namespace velorn
