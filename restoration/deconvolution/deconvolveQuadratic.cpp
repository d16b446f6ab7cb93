#include "restoration/deconvolution/deconvolveQuadratic.h"

#include "restoration/deconvolution/tileTransforms.h"

namespace restoration {

void deconvolveQuadratic(const Plane& y, const BlurSpectrum& blur, float weight, const Plane* mean,
                         Plane& x, TileScratch& scratch, const Cancellation& cancellation) {
    const vel::RealFft2D& fft = blur.fft();
    float* rowMemory = scratch.rowMemory(fft);
    float* spectrum = scratch.spectrum(fft, 0);
    float* meanSpectrum = nullptr;
    forwardRows(fft, y, spectrum, rowMemory, cancellation);
    if (mean != nullptr) {
        meanSpectrum = scratch.spectrum(fft, 1);
        forwardRows(fft, *mean, meanSpectrum, rowMemory, cancellation);
    }
    forEachBlock(fft, cancellation, [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum + offset, block);
        if (mean != nullptr) {
            fft.forwardColumns(meanSpectrum + offset, block);
        }
        blur.deconvolve(block, weight, mean == nullptr ? nullptr : meanSpectrum + offset,
                        spectrum + offset);
        fft.inverseColumns(spectrum + offset, block);
    });
    inverseRows(fft, spectrum, x, rowMemory, cancellation);
}

} // namespace restoration
