#pragma once

#include "restoration/blind/local/GridKernels.h"

namespace restoration {

/// The mean likeness of the kernels of cells and that of the whole picture, weighted by
/// reliability, 0..1; 1 where no kernel is reliable.
double likenessToWhole(const GridKernels& kernels);

/// The mean agreement of the cells that have edges, 0..1; 0 without any.
double meanAgreement(const GridKernels& kernels);

/// Whether the power spectra of more than half of the cells show a blur. Cells without edges and
/// sharp ones do not.
bool showsBlur(const GridKernels& kernels);

} // namespace restoration
