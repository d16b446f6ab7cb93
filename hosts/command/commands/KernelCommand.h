#pragma once

#include "hosts/command/options/KernelOptions.h"
#include "hosts/command/terminal/Interrupt.h"

namespace velorn {

/// Runs `velorn kernel`: makes the kernel and writes it as text or as a picture.
/// @throws Failure that names the file, Interrupted. The output is then unchanged.
void runKernel(const KernelOptions& options, const Interrupt& interrupt);

} // namespace velorn
