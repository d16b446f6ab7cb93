#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/RgbPixels.h"
#include "hosts/command/restoration/Restoration.h"

#include <optional>

namespace velorn {

/// The sides of a kernel to look for: odd, at least 3.
struct KernelSize {
    int width = 0;
    int height = 0;

    int largerSide() const { return width > height ? width : height; }
};

/// `size`, given for the picture as displayed, for the rows and columns as a file with the given
/// EXIF orientation (1..8) stores them.
KernelSize asStored(KernelSize size, int orientation);

/// The largest side that is looked for. The estimate's memory grows with the fourth power of the
/// side: it is about 250 MB here.
inline constexpr int kLargestEstimatedSide = 63;

/// The library's blind estimate of the blur of `pixels`; nothing when the picture has too few edges
/// for a kernel of this size. `strength` is that of velorncore10.h: how far the edges that the last
/// kernel is fitted to are softened.
///
/// The estimate cannot be cancelled: what `progress` answers is not looked at. It may be called on
/// another thread, one call at a time, and must not throw.
/// @throws Failure with the library's reason.
std::optional<BlurKernel> estimateKernel(const RgbPixels& pixels, KernelSize size, float strength,
                                         const ProgressFunction& progress);

} // namespace velorn
