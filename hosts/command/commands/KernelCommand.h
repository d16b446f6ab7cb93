#pragma once

#include "hosts/command/commands/Options.h"
#include "hosts/command/terminal/Interrupt.h"

namespace velorn {

/// Runs `velorn kernel`: makes the kernel and writes it as text or as a picture.
/// @throws Failure naming the file, Interrupted. Either way the output is as it was before.
void runKernel(const KernelOptions& options, const Interrupt& interrupt);

} // namespace velorn
