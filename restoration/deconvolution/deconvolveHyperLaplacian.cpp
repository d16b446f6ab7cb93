#include "restoration/deconvolution/deconvolveHyperLaplacian.h"

#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/deconvolution/unknownRows.h"
#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"
#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <cstddef>
#include <utility>

namespace restoration {
namespace {

constexpr int kGroupRows = vel::RealFft2D::kLanes; // rows that the transform takes at a time

/// The first pass that replaces unknown pixels; the last one does not need to. Replacements in
/// earlier passes change the estimate by less than it is wrong.
constexpr int kFirstReplacement = 3;

/// One deconvolution: its planes, its scratch and the steps of a pass.
class Passes {
public:
    Passes(const BlurSpectrum& blur, Plane& x, TileScratch& scratch,
           const Cancellation& cancellation)
        : m_blur(blur), m_fft(blur.fft()), m_x(x), m_scratch(scratch), m_cancellation(cancellation),
          m_rowMemory(scratch.rowMemory(m_fft)), m_numerator(scratch.spectrum(m_fft, 0)),
          m_spectrum(scratch.spectrum(m_fft, 1)), m_rows(scratch.rows(kGroupRows + 3)) {}

    /// The numerator conj(K) Y.
    void transformObserved(const Plane& y) {
        forwardRows(m_fft, y, m_numerator, m_rowMemory, m_cancellation);
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            m_fft.forwardColumns(m_numerator + offset, block);
            m_blur.correlate(block, m_numerator + offset, m_numerator + offset);
        });
    }

    /// Shrinks the gradients of `estimate` and transforms the rows of their adjoint.
    void transformAdjoint(const Plane& estimate, const vel::ShrinkCurve& curve) {
        for (int group = 0; group < m_fft.groupCount(); ++group) {
            m_cancellation.check();
            makeAdjointRows(estimate, group * kGroupRows, curve);
            m_fft.forwardRowGroup(m_rows, rowBytes(m_fft), group, m_spectrum, m_rowMemory);
        }
    }

    void divide(float gamma) {
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            divideBlock(block, offset, gamma);
            m_fft.inverseColumns(m_spectrum + offset, block);
        });
        inverseRows(m_fft, m_spectrum, m_x, m_rowMemory, m_cancellation);
    }

    /// The same; also replaces the unknown pixels of `y` by those of the blurred result.
    void divideAndReplace(float gamma, const Mask& known, Plane& y) {
        float* blurred = m_scratch.spectrum(m_fft, 2);
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            divideBlock(block, offset, gamma);
            m_blur.blur(block, m_spectrum + offset, blurred + offset);
            m_fft.inverseColumns(m_spectrum + offset, block);
            m_fft.inverseColumns(blurred + offset, block);
        });
        inverseRows(m_fft, m_spectrum, m_x, m_rowMemory, m_cancellation);
        Plane& again = m_scratch.plane(0);
        inverseRows(m_fft, blurred, again, m_rowMemory, m_cancellation);
        const auto side = static_cast<std::size_t>(m_fft.width());
        for (int row = 0; row < m_fft.height(); ++row) {
            replaceUnknown(known.row(row), again.row(row), y.row(row), side);
        }
    }

private:
    void divideBlock(int block, std::size_t offset, float gamma) {
        m_fft.forwardColumns(m_spectrum + offset, block);
        m_blur.quotient().divide(block, m_numerator + offset, gamma, m_spectrum + offset);
    }

    /// Writes the rows `first`..`first` + 15 of the adjoint to `m_rows`.
    void makeAdjointRows(const Plane& estimate, int first, const vel::ShrinkCurve& curve) {
        const auto n = static_cast<std::size_t>(m_fft.width());
        const int last = m_fft.height() - 1;
        float* wx = m_rows + kGroupRows * n;
        float* wyAbove = wx + n;
        float* wy = wyAbove + n;
        vel::shrinkDifferenceRow(curve, estimate.row(first),
                                 estimate.row(first > 0 ? first - 1 : last), wyAbove, n);
        for (int r = first; r < first + kGroupRows; ++r) {
            const float* row = estimate.row(r);
            vel::shrinkDifferenceRow(curve, row + 1, row, wx, n - 1);
            vel::shrinkDifferenceRow(curve, row, row + n - 1, wx + n - 1, 1);
            vel::shrinkDifferenceRow(curve, estimate.row(r < last ? r + 1 : 0), row, wy, n);
            float* adjoint = m_rows + static_cast<std::size_t>(r - first) * n;
            vel::adjointRow(wx, wyAbove, wy, adjoint, n);
            // The core leaves out the step across the seam, which is an ordinary pixel here.
            adjoint[0] += wx[n - 1] - wx[0];
            std::swap(wy, wyAbove);
        }
    }

    const BlurSpectrum& m_blur;
    const vel::RealFft2D& m_fft;
    Plane& m_x;
    TileScratch& m_scratch;
    const Cancellation& m_cancellation;
    float* m_rowMemory;
    float* m_numerator;
    float* m_spectrum;
    float* m_rows; ///< a group of rows of the adjoint and three lines
};

} // namespace

void deconvolveHyperLaplacian(Plane& y, const Mask* known, const BlurSpectrum& blur,
                              const HyperLaplacian& prior, Plane& x, TileScratch& scratch,
                              const Cancellation& cancellation) {
    const int exponent = vel::shrinkAlphaIndex(static_cast<double>(prior.exponent));
    Passes passes(blur, x, scratch, cancellation);
    passes.transformObserved(y);
    int level = 0;
    vel::forEachBeta([&](double beta) {
        const vel::ShrinkCurve curve(vel::storedShrink(level, exponent));
        const auto gamma = static_cast<float>(beta / static_cast<double>(prior.strength));
        passes.transformAdjoint(level == 0 ? y : x, curve);
        if (known != nullptr && level >= kFirstReplacement && level + 1 < vel::kShrinkLevels) {
            passes.divideAndReplace(gamma, *known, y);
            passes.transformObserved(y);
        } else {
            passes.divide(gamma);
        }
        ++level;
    });
}

} // namespace restoration
