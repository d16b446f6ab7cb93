#pragma once

#include "hosts/command/commands/Options.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn estimate`: finds the blur kernel of a picture, writes it as text or as a picture
/// and shows it on `out`. `terminal` is stderr; the progress bar shows there when `isTerminal`, and
/// a warning when a restoration with the kernel looks worse than the picture.
/// @throws Failure naming the file, Interrupted. Either way the output is as it was before.
void runEstimate(const EstimateOptions& options, const Interrupt& interrupt, std::ostream& out,
                 std::ostream& terminal, bool isTerminal);

} // namespace velorn
