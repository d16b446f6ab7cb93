#pragma once

#include "restoration/blind/findKernel.h"
#include "velorn.h"

#include <cstddef>

namespace restoration {

/// What the host learns of a kernel. `candidates` is the number of kernels that the call has found.
VelornFindReport findReport(const FoundKernel& found, std::size_t candidates) noexcept;

} // namespace restoration
