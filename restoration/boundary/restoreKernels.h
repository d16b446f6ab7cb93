#pragma once

#include "restoration/kernels/Kernel.h"
#include "velorn.h"

#include <cstdint>
#include <vector>

namespace restoration {

/// @throws Failure VELORN_STATUS_KERNEL_TOO_LARGE for a kernel larger than the source
void requireFit(const Kernel& kernel, const VelornPicture& source);

/// The kernels of a restoration of `source`, which has passed checkPicture: none, one, or one for
/// each colour channel. Kernels of a single pixel blur nothing and are left out if all are. They
/// live as long as the host's kernels.
/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for other counts and null pointers,
///         VELORN_STATUS_KERNEL_TOO_LARGE for kernels larger than the source
std::vector<const Kernel*> checkedKernels(const VelornKernel* const* kernels, std::int32_t count,
                                          const VelornPicture& source);

} // namespace restoration
