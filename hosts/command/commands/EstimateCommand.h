#pragma once

#include "hosts/command/options/EstimateOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <ostream>

namespace velorn {

/// Runs `velorn estimate`: finds the blur kernel of a picture, writes it as text or as a picture
/// and prints it to `out`. `terminal` is stderr; it shows a progress bar if `isTerminal`, and a
/// warning when a restoration with the kernel may be worse than the picture.
/// @throws Failure that names the file, Interrupted. The output is then unchanged.
void runEstimate(const EstimateOptions& options, const Interrupt& interrupt, std::ostream& out,
                 std::ostream& terminal, bool isTerminal);

} // namespace velorn
