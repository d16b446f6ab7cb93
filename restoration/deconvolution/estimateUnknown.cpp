#include "restoration/deconvolution/estimateUnknown.h"

#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/deconvolution/unknownRows.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

struct Stage {
    float weight;
    int steps;
};
constexpr Stage kStages[] = {{3e-3f, 3}, {3e-4f, 3}};

/// A step is longer than the residual by the inverse of this number at most. Eigenvalues of the
/// matrix lie in 0..1; no content of a picture comes near the limit.
constexpr double kLeastGain = 1e-6;

/// The system of equations of one weight: the matrix is I - P H P, with H the filter of
/// `BlurSpectrum::reblur` and P the projection on unknown pixels.
class Equations {
public:
    Equations(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
              const Cancellation& cancellation)
        : m_y(y), m_known(known), m_blur(blur), m_fft(blur.fft()), m_scratch(scratch),
          m_cancellation(cancellation), m_residual(scratch.plane(0)), m_direction(scratch.plane(1)),
          m_product(scratch.plane(2)) {}

    /// Conjugate gradients.
    void improve(const Stage& stage) {
        double square = startResidual(stage.weight);
        for (int step = 0; step < stage.steps && square > 0; ++step) {
            const double curvature = multiplyDirection(stage.weight);
            if (!(curvature > kLeastGain * square)) {
                return;
            }
            const double next = advance(static_cast<float>(square / curvature));
            turn(static_cast<float>(next / square));
            square = next;
        }
    }

private:
    /// target = H source
    void reblur(const Plane& source, float weight, Plane& target) {
        float* rowMemory = m_scratch.rowMemory(m_fft);
        float* spectrum = m_scratch.spectrum(m_fft, 1);
        forwardRows(m_fft, source, spectrum, rowMemory, m_cancellation);
        forEachBlock(m_fft, m_cancellation, [&](int block, std::size_t offset) {
            m_fft.forwardColumns(spectrum + offset, block);
            m_blur.reblur(block, weight, spectrum + offset);
            m_fft.inverseColumns(spectrum + offset, block);
        });
        inverseRows(m_fft, spectrum, target, rowMemory, m_cancellation);
    }

    /// The residual and the first direction: what H changes at unknown pixels.
    /// @return the squared norm of the residual
    double startResidual(float weight) {
        reblur(m_y, weight, m_product);
        double square = 0;
        for (int row = 0; row < m_fft.height(); ++row) {
            float* residual = m_residual.row(row);
            subtractUnknown(m_known.row(row), m_product.row(row), m_y.row(row), residual, width());
            std::copy_n(residual, width(), m_direction.row(row));
            square += dotRow(residual, residual, width());
        }
        return square;
    }

    /// The product of the matrix and the direction.
    /// @return its scalar product with the direction
    double multiplyDirection(float weight) {
        reblur(m_direction, weight, m_product);
        double sum = 0;
        for (int row = 0; row < m_fft.height(); ++row) {
            float* product = m_product.row(row);
            const float* direction = m_direction.row(row);
            subtractUnknown(m_known.row(row), direction, product, product, width());
            sum += dotRow(direction, product, width());
        }
        return sum;
    }

    /// @return the squared norm of the new residual
    double advance(float length) {
        double square = 0;
        for (int row = 0; row < m_fft.height(); ++row) {
            float* residual = m_residual.row(row);
            addScaledRow(length, m_direction.row(row), m_y.row(row), width());
            addScaledRow(-length, m_product.row(row), residual, width());
            square += dotRow(residual, residual, width());
        }
        return square;
    }

    void turn(float factor) {
        for (int row = 0; row < m_fft.height(); ++row) {
            addToScaledRow(factor, m_residual.row(row), m_direction.row(row), width());
        }
    }

    std::size_t width() const noexcept { return static_cast<std::size_t>(m_fft.width()); }

    Plane& m_y;
    const Mask& m_known;
    const BlurSpectrum& m_blur;
    const vel::RealFft2D& m_fft;
    TileScratch& m_scratch;
    const Cancellation& m_cancellation;
    Plane& m_residual;
    Plane& m_direction;
    Plane& m_product;
};

} // namespace

void estimateUnknown(Plane& y, const Mask& known, const BlurSpectrum& blur, TileScratch& scratch,
                     const Cancellation& cancellation) {
    Equations equations(y, known, blur, scratch, cancellation);
    for (const Stage& stage : kStages) {
        equations.improve(stage);
    }
}

} // namespace restoration
