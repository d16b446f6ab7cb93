#pragma once

#include "velorncore10.h"

namespace vel {

/// Body of `ornCreateKernel`: makes the shape of `type` and fills the record, data included.
/// @return VELORN_OK, or VELORN_BAD_ARGUMENT, with the record untouched, when there is no record,
/// no data or no such type
/// @throws std::bad_alloc or cv::Exception for shapes that no memory holds
int32_t createKernel(int32_t type, float paramA, float paramB, KernelRecord* kernel);

} // namespace vel
