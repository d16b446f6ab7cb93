#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/restoration/Restoration.h"

namespace velorn {

/// `restore` for pictures whose frame cuts through what they show, as every photograph's does.
///
/// A blur carries light from beyond the frame into the picture. A deconvolution that knows nothing
/// of what lies there answers with streaks along the frame, far into the picture where the blur is
/// a motion. So the picture is continued outwards by the kernel's sides: by its outermost pixels at
/// first, then `passes` times by what a calm restoration of the rim finds there, blurred again by
/// the kernel. The continuation so agrees with the kernel, and the picture inside the frame stays
/// as it was taken. At last the whole is restored and cut to the frame.
///
/// Without any pass, or where a continuation does not pay (no deconvolution, kernels that would
/// not fit the larger picture or have very many weights), this is `restore`.
RgbPixels restoreInFrame(const RgbPixels& source, const BlurKernel& kernel,
                         const RestorationSettings& settings, int passes,
                         const ProgressFunction& progress);

} // namespace velorn
