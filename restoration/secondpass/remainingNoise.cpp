#include "restoration/secondpass/remainingNoise.h"

#include "restoration/deconvolution/BlurSpectrum.h"
#include "restoration/deconvolution/TileScratch.h"
#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/secondpass/approachRows.h"
#include "restoration/secondpass/dctVariances.h"

#include <cstddef>

namespace restoration {

DctVariances remainingNoise(const Kernel& kernel, float weight) {
    constexpr int kSide = 256; // of the plane on which the spectrum is sampled
    const BlurSpectrum blur(kernel, kSide);
    const vel::RealFft2D& fft = blur.fft();
    TileScratch scratch(blur.side());
    float* power = scratch.spectrum(fft, 0);
    for (int block = 0; block < fft.blockCount(); ++block) {
        const std::size_t offset = blur.offsetOf(block);
        remainingNoiseRows(blur.spectrum() + offset, weight, power + offset,
                           static_cast<std::size_t>(blur.side()));
    }
    for (const std::size_t slot : vel::realSlots(fft)) {
        const float k = blur.spectrum()[slot];
        power[slot] = k * k / ((k * k + weight) * (k * k + weight));
    }
    for (int block = 0; block < fft.blockCount(); ++block) {
        fft.inverseColumns(power + blur.offsetOf(block), block);
    }
    Plane& autocovariance = scratch.plane(0);
    inverseRows(fft, power, autocovariance, scratch.rowMemory(fft), Cancellation());
    return dctVariances(autocovariance);
}

} // namespace restoration
