#pragma once

#include "hosts/command/batch/PictureContext.h"
#include "hosts/command/options/DeblurOptions.h"
#include "hosts/command/terminal/Interrupt.h"

#include <optional>

namespace velorn {

/// The kernel that `source` gives, for pictures as displayed; nothing where it is found in the
/// picture or not needed.
/// @throws Failure that names the file of the kernel.
std::optional<BlurKernel> knownKernel(const KernelSource& source);

/// Reads the picture `options.input`, restores it with the kernel `displayed`, or as the options
/// say if there is none, and replaces `options.output` in a single step or writes it to the
/// standard output.
/// @throws Failure that names the file, Interrupted. The output is then unchanged.
void deblurPicture(const DeblurOptions& options, const std::optional<BlurKernel>& displayed,
                   const PictureContext& context, const Interrupt& interrupt);

} // namespace velorn
