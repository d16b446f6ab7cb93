#include "restoration/deconvolution/estimateUnknown.h"

#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/deconvolution/unknownRows.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

/// Weights of the prior, evenly on a logarithmic scale.
constexpr float kWeights[] = {3e-2f, 1.28e-2f, 5.5e-3f, 2.34e-3f, 1e-3f};
/// The share of the last change that a pass adds to its start.
constexpr float kMomentum = 0.6f;

/// Deconvolves the plane, blurs the result and writes it to `again`.
void reblur(const Plane& plane, float weight, Plane& again, const BlurSpectrum& blur,
            TileScratch& scratch, const Cancellation& cancellation) {
    const vel::RealFft2D& fft = blur.fft();
    float* rowMemory = scratch.rowMemory(fft);
    float* spectrum = scratch.spectrum(fft, 0);
    forwardRows(fft, plane, spectrum, rowMemory, cancellation);
    forEachBlock(fft, cancellation, [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum + offset, block);
        blur.reblur(block, weight, spectrum + offset);
        fft.inverseColumns(spectrum + offset, block);
    });
    inverseRows(fft, spectrum, again, rowMemory, cancellation);
}

} // namespace

void estimateUnknown(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation) {
    Plane& again = scratch.plane(0);
    Plane& start = scratch.plane(1);
    Plane& previous = scratch.plane(2);
    const auto columns = static_cast<std::size_t>(blur.side());
    std::ranges::copy(y.values(), previous.values().begin());
    for (const float weight : kWeights) {
        for (int row = 0; row < blur.side(); ++row) {
            extrapolate(kMomentum, y.row(row), previous.row(row), start.row(row), columns);
        }
        reblur(start, weight, again, blur, scratch, cancellation);
        for (int row = 0; row < blur.side(); ++row) {
            replaceUnknown(known.row(row), again.row(row), y.row(row), columns);
        }
    }
}

} // namespace restoration
