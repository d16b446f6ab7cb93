#include "restoration/deconvolution/blurPlane.h"

#include "restoration/deconvolution/tileTransforms.h"

#include <cstddef>

namespace restoration {

void blurPlane(const Plane& x, const BlurSpectrum& blur, Plane& blurred, TileScratch& scratch,
               const Cancellation& cancellation) {
    const vel::RealFft2D& fft = blur.fft();
    float* rowMemory = scratch.rowMemory(fft);
    float* spectrum = scratch.spectrum(fft, 0);
    forwardRows(fft, x, spectrum, rowMemory, cancellation);
    forEachBlock(fft, cancellation, [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum + offset, block);
        blur.blur(block, spectrum + offset, spectrum + offset);
        fft.inverseColumns(spectrum + offset, block);
    });
    inverseRows(fft, spectrum, blurred, rowMemory, cancellation);
}

} // namespace restoration
