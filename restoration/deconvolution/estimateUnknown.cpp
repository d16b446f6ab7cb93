#include "restoration/deconvolution/estimateUnknown.h"

#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/deconvolution/unknownRows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace restoration {
namespace {

/// Weights of the prior, evenly on a logarithmic scale.
constexpr float kWeights[] = {3e-2f, 1.28e-2f, 5.5e-3f, 2.34e-3f, 1e-3f};
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

/// Passes from the estimate in `y`.
class Estimation {
public:
    Estimation(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
               const Cancellation& cancellation)
        : m_y(y), m_known(known), m_blur(blur), m_scratch(scratch), m_cancellation(cancellation),
          m_again(scratch.plane(0)), m_start(scratch.plane(1)), m_previous(scratch.plane(2)) {
        std::ranges::copy(y.values(), m_previous.values().begin());
    }

    /// @param momentum  the share of the last change that is added to the start
    void pass(float weight, float momentum) {
        const auto columns = static_cast<std::size_t>(m_blur.side());
        for (int row = 0; row < m_blur.side(); ++row) {
            extrapolate(momentum, m_y.row(row), m_previous.row(row), m_start.row(row), columns);
        }
        reblur(m_start, weight, m_again, m_blur, m_scratch, m_cancellation);
        for (int row = 0; row < m_blur.side(); ++row) {
            replaceUnknown(m_known.row(row), m_again.row(row), m_y.row(row), columns);
        }
    }

private:
    Plane& m_y;
    const Mask& m_known;
    const BlurSpectrum& m_blur;
    TileScratch& m_scratch;
    const Cancellation& m_cancellation;
    Plane& m_again;
    Plane& m_start;
    Plane& m_previous;
};

} // namespace

void estimateUnknown(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation) {
    Estimation estimation(y, known, blur, scratch, cancellation);
    for (const float weight : kWeights) {
        estimation.pass(weight, kMomentum);
    }
}

void estimateClipped(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation) {
    constexpr int kPasses = 16;
    constexpr float kWeight = 5e-4f;
    Estimation estimation(y, known, blur, scratch, cancellation);
    float step = 1.0f;
    for (int pass = 0; pass < kPasses; ++pass) {
        const float next = (1.0f + std::sqrt(1.0f + 4.0f * step * step)) / 2.0f;
        estimation.pass(kWeight, (step - 1.0f) / next);
        step = next;
    }
}

} // namespace restoration
