#pragma once

#include "restoration/kernels/Kernel.h"

namespace restoration {

/// The kernel shifted by whole pixels so that its centre of mass is as close to its middle as
/// possible. A restoration with such a kernel does not move the picture. A kernel found in a
/// picture may lie anywhere, because the picture does not show where it would be without the blur.
///
/// The size stays the same. The shift is limited so that no value other than 0 is lost. Negative
/// values count by their magnitude.
Kernel centred(const Kernel& kernel);

} // namespace restoration
