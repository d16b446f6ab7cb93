#include "restoration/chroma/restoreChroma.h"

#include "restoration/chroma/gradientRows.h"
#include "restoration/deconvolution/tileTransforms.h"
#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace restoration {
namespace {

constexpr int kGroupRows = vel::RealFft2D::kLanes; // rows that the transform takes at a time

/// One restoration: its planes, its scratch and the steps of a pass.
class Passes {
public:
    Passes(const BlurSpectrum& blur, Plane& x, TileScratch& scratch,
           const Cancellation& cancellation)
        : m_blur(blur), m_fft(blur.fft()), m_x(x), m_energy(scratch.plane(0)),
          m_cancellation(cancellation), m_rowMemory(scratch.rowMemory(m_fft)),
          m_numerator(scratch.spectrum(m_fft, 0)), m_spectrum(scratch.spectrum(m_fft, 1)),
          m_rows(scratch.rows(kGroupRows + 4)) {}

    /// The numerator conj(K) Y.
    void transformObserved(const Plane& y) {
        forwardRows(m_fft, y, m_numerator, m_rowMemory, m_cancellation);
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            m_fft.forwardColumns(m_numerator + offset, block);
            m_blur.correlate(block, m_numerator + offset, m_numerator + offset);
        });
    }

    /// The quadratic restoration: gradients are drawn towards 0.
    void divide(float weight) {
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            std::fill_n(m_spectrum + offset, m_fft.blockFloats(), 0.0f);
            divideBlock(block, offset, weight);
        });
        inverseRows(m_fft, m_spectrum, m_x, m_rowMemory, m_cancellation);
    }

    /// Gradients are drawn towards those of the previous result, times their gains.
    void divideTowardsGradients(float weight, float noise) {
        measureEnergy();
        for (int group = 0; group < m_fft.groupCount(); ++group) {
            m_cancellation.check();
            makeAdjointRows(group * kGroupRows, noise);
            m_fft.forwardRowGroup(m_rows, rowBytes(m_fft), group, m_spectrum, m_rowMemory);
        }
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            m_fft.forwardColumns(m_spectrum + offset, block);
            divideBlock(block, offset, weight);
        });
        inverseRows(m_fft, m_spectrum, m_x, m_rowMemory, m_cancellation);
    }

private:
    void divideBlock(int block, std::size_t offset, float weight) {
        m_blur.quotient().divide(block, m_numerator + offset, weight, m_spectrum + offset);
        m_fft.inverseColumns(m_spectrum + offset, block);
    }

    void measureEnergy() {
        for (int row = 0; row < m_fft.height(); ++row) {
            gradientEnergy(m_x.row(row), m_x.row(below(row)), m_energy.row(row), side());
        }
    }

    /// The gradients of a row, times their gains.
    void makeGradients(int row, float noise, float* wx, float* wy) {
        float* gains = m_rows + (kGroupRows + 3) * side();
        gradientGain(m_energy.row(above(row)), m_energy.row(row), m_energy.row(below(row)), noise,
                     gains, side());
        scaledGradient(m_x.row(row), m_x.row(below(row)), gains, wx, wy, side());
    }

    /// Writes the rows `first`..`first` + 15 of the adjoint of the scaled gradients to `m_rows`.
    void makeAdjointRows(int first, float noise) {
        float* wx = m_rows + kGroupRows * side();
        float* wyAbove = wx + side();
        float* wy = wyAbove + side();
        makeGradients(above(first), noise, wx, wyAbove);
        for (int row = first; row < first + kGroupRows; ++row) {
            makeGradients(row, noise, wx, wy);
            float* adjoint = m_rows + static_cast<std::size_t>(row - first) * side();
            vel::adjointRow(wx, wyAbove, wy, adjoint, side());
            // The core leaves out the step across the seam, which is an ordinary pixel here.
            adjoint[0] += wx[side() - 1] - wx[0];
            std::swap(wy, wyAbove);
        }
    }

    std::size_t side() const noexcept { return static_cast<std::size_t>(m_fft.width()); }
    int above(int row) const noexcept { return row > 0 ? row - 1 : m_fft.height() - 1; }
    int below(int row) const noexcept { return row + 1 < m_fft.height() ? row + 1 : 0; }

    const BlurSpectrum& m_blur;
    const vel::RealFft2D& m_fft;
    Plane& m_x;
    Plane& m_energy; ///< |grad x|^2
    const Cancellation& m_cancellation;
    float* m_rowMemory;
    float* m_numerator;
    float* m_spectrum;
    float* m_rows; ///< a group of rows of the adjoint and four lines
};

} // namespace

void restoreChroma(const Plane& y, const BlurSpectrum& blur, const ChromaPrior& prior, Plane& x,
                   TileScratch& scratch, const Cancellation& cancellation) {
    constexpr float kNoiseFactor = 9.0f;
    constexpr float kWeightFactors[] = {1.0f, 1.0f, 3.0f};
    Passes passes(blur, x, scratch, cancellation);
    passes.transformObserved(y);
    passes.divide(prior.weight);
    for (const float factor : kWeightFactors) {
        passes.divideTowardsGradients(factor * prior.weight, kNoiseFactor * prior.gradientNoise);
    }
}

} // namespace restoration
