#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn {

/// `kernel` shifted by whole pixels so that its centre of mass is as close to its middle as
/// possible. A restoration with such a kernel does not move the picture. A kernel found in a
/// picture may lie anywhere, because the picture does not show where it would be without the blur.
///
/// The size stays the same. The shift is limited so that no weight other than 0 is lost.
BlurKernel centred(const BlurKernel& kernel);

} // namespace velorn
