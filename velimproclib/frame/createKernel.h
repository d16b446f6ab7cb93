#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `ornCreateKernel`: creates the kernel of `type` and fills the record and its data.
/// @return VELORN_OK, or VELORN_BAD_ARGUMENT for a null record, null data or an unknown type, with
///         the record unchanged
/// @throws std::bad_alloc or cv::Exception when the allocation of the kernel fails
int32_t createKernel(int32_t type, float paramA, float paramB, KernelRecord* kernel);

} // namespace vel
