#pragma once

#include "hosts/command/options/TryOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// `velorn try`: restores a part of a picture in several ways, writes a sheet that shows them, and
/// prints the command lines that restore the picture in each way.
/// @throws Failure, Interrupted
void runTry(const TryOptions& options, const Interrupt& interrupt, std::ostream& out,
            std::ostream& terminal, bool isTerminal);

} // namespace velorn
