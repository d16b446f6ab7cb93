#pragma once

#include "hosts/command/kernels/BlurKernel.h"

namespace velorn {

/// `kernel` moved by whole pixels so that its centre of mass comes nearest to its middle: a
/// restoration with it leaves the picture in its place. A kernel found in a picture may lie
/// anywhere, since the picture does not say where it would be without the blur. The size stays, and
/// the way ends where a weight would be lost.
BlurKernel centred(const BlurKernel& kernel);

} // namespace velorn
