#pragma once

#include "restoration/blind/local/CellKernel.h"
#include "restoration/kernels/Kernel.h"

namespace restoration {

/// How far a restoration may rely on the kernel of a cell. The share follows from the evidence in
/// the cell; cells without have that of `whole`, the kernel of the whole picture, and sharp cells
/// have 1. The strength is at most 300: kernels of cells are found in few pixels and do not follow
/// what changes within a cell.
Trust cellTrust(const CellKernel& found, const Trust& whole);

} // namespace restoration
