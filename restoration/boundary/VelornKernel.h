#pragma once

#include "restoration/kernels/Kernel.h"
#include "velorn.h"

/// The kernel behind the host's pointer.
struct VelornKernel {
    restoration::Kernel kernel;
};
