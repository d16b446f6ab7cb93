#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/restoration/Restoration.h"

namespace velorn {

/// Restores `source` like `restore`, but without the streaks that start at the frame.
///
/// A blur carries light from beyond the frame into the picture. A deconvolution that does not know
/// this light produces streaks along the frame; those of a motion blur reach far into the picture.
/// Therefore the picture is continued outwards by the sides of the kernel:
///
/// 1. The border pixels are repeated.
/// 2. `passes` times, the rim is restored gently and blurred again with the kernel; the result
///    replaces the continuation. The continuation then agrees with the kernel. The picture inside
///    the frame does not change.
/// 3. The continued picture is restored and cut to the frame.
///
/// Calls `restore` alone without passes, without deconvolution, for kernels that do not fit the
/// continued picture, and for kernels with so many weights that step 2 would take too long.
RgbPixels restoreInFrame(const RgbPixels& source, const BlurKernel& kernel,
                         const RestorationSettings& settings, int passes,
                         const ProgressFunction& progress);

} // namespace velorn
