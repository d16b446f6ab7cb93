#pragma once

#include <cstdint>
#include <string>

namespace velorn {

/// What the time of a restoration depends on.
struct RestorationWork {
    int width = 0;
    int height = 0;
    bool isGrey = false;
    /// The larger side of the kernel in pixels; 1 without deconvolution.
    int kernelSide = 1;
    /// VelornQuality
    std::int32_t quality = 0;
    /// At least 1.
    int threads = 1;
};

/// The time that a restoration takes, in seconds, without the search for a kernel.
///
/// Tiles reach beyond the picture by the kernel, therefore the work is
/// (width + 2 side) (height + 2 side) pixels. A million of them take 0.35 + 0.0017 side seconds of
/// one processor at normal quality in colour, 0.8 times as long at fast and 1.7 times as long at
/// best quality, and 0.6 times as long in grey. Threads share the time evenly. The numbers are a
/// fit to runs of 1.5 and 6 megapixels with kernels of 7 to 511 pixels, from which it differs by up
/// to 40 percent; another processor, or a busy one, may take three times as long.
double restorationSeconds(const RestorationWork& work);

/// "about 3 minutes", "about 2 hours"
std::string aboutText(double seconds);

} // namespace velorn
