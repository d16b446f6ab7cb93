#include "restoration/blind/trialRestoration.h"

#include "restoration/blind/LatentGradients.h"
#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"
#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr double kStrength = 3000.0;
constexpr double kAlpha = 0.5;
constexpr int kRowsOfGroup = vel::RealFft2D::kLanes;

vel::AlignedFloats spectrumOf(SquareTransform& transform, const Plane& plane) {
    vel::AlignedFloats spectrum;
    spectrum.resize(transform.fft().spectrumFloats());
    transform.forward(plane, spectrum.data());
    return spectrum;
}

vel::AlignedFloats kernelSpectrum(SquareTransform& transform, const SquareKernel& kernel) {
    Plane placed(transform.side(), transform.side());
    placeCyclically(kernel, placed);
    return spectrumOf(transform, placed);
}

/// The shrunk gradients of `x`, their adjoint, and its transform along rows.
class ShrunkGradients {
public:
    ShrunkGradients(SquareTransform& transform, const Plane& x, int level)
        : m_transform(transform), m_x(x), m_side(static_cast<std::size_t>(transform.side())),
          m_curve(vel::storedShrink(level, vel::shrinkAlphaIndex(kAlpha))), m_right(m_side),
          m_above(m_side), m_down(m_side), m_rows(transform.side(), kRowsOfGroup) {}

    void transformAdjoint(float* spectrum) {
        const int side = m_transform.side();
        for (int group = 0; group < m_transform.fft().groupCount(); ++group) {
            const int first = group * kRowsOfGroup;
            for (int y = first; y < std::min(first + kRowsOfGroup, side); ++y) {
                makeRow(y, m_rows.row(y - first));
            }
            m_transform.forwardGroup(m_rows.row(0), group, spectrum);
        }
    }

private:
    void makeRow(int y, float* adjoint) {
        const float* row = m_x.row(y);
        vel::shrinkDifferenceRow(m_curve, row + 1, row, m_right.data(), m_side - 1);
        m_right.back() = 0.0f;
        if (y + 1 < m_x.height()) {
            vel::shrinkDifferenceRow(m_curve, m_x.row(y + 1), row, m_down.data(), m_side);
        } else {
            std::ranges::fill(m_down, 0.0f);
        }
        vel::adjointRow(m_right.data(), y > 0 ? m_above.data() : nullptr, m_down.data(), adjoint,
                        m_side);
        std::swap(m_above, m_down);
    }

    SquareTransform& m_transform;
    const Plane& m_x;
    std::size_t m_side;
    vel::ShrinkCurve m_curve;
    std::vector<float> m_right;
    std::vector<float> m_above;
    std::vector<float> m_down;
    Plane m_rows;
};

/// Calls work(block, columns of `first`, columns of `second`).
template <class Work>
void forEachBlock(const SquareTransform& transform, vel::AlignedFloats& first,
                  const vel::AlignedFloats& second, const Work& work) {
    transform.forEachBlock(first.data(), [&](int block, float* columns) {
        work(block, columns, second.data() + (columns - first.data()));
    });
}

} // namespace

Plane trialRestoration(SquareTransform& transform, const Plane& picture,
                       const SquareKernel& kernel) {
    const vel::RealFft2D& fft = transform.fft();
    const vel::AlignedFloats kernelColumns = kernelSpectrum(transform, kernel);
    vel::SpectralQuotient quotient;
    quotient.setKernel(fft, kernelColumns.data());
    vel::AlignedFloats numerator = spectrumOf(transform, picture);
    forEachBlock(transform, numerator, kernelColumns,
                 [&](int block, float* columns, const float* kernelBlock) {
                     vel::multiplyByConjugate(fft, block, columns, kernelBlock, columns);
                 });
    vel::AlignedFloats spectrum;
    spectrum.resize(fft.spectrumFloats());
    Plane restored(transform.side(), transform.side());
    const Plane* x = &picture;
    vel::forEachBeta([&](double beta) {
        ShrunkGradients(transform, *x, vel::shrinkLevel(beta, vel::kBetaRate))
            .transformAdjoint(spectrum.data());
        const auto gamma = static_cast<float>(beta / kStrength);
        forEachBlock(transform, spectrum, numerator,
                     [&](int block, float* columns, const float* numeratorBlock) {
                         fft.forwardColumns(columns, block);
                         quotient.divide(block, numeratorBlock, gamma, columns);
                         fft.inverseColumns(columns, block);
                     });
        transform.inverseRows(spectrum.data(), 0, transform.side() - 1, restored);
        x = &restored;
    });
    return restored;
}

Plane blurredCyclically(SquareTransform& transform, const Plane& plane,
                        const SquareKernel& kernel) {
    const vel::RealFft2D& fft = transform.fft();
    // Rotated by 180 degrees, the kernel has the conjugate spectrum.
    SquareKernel rotated = kernel;
    std::ranges::reverse(rotated.values);
    const vel::AlignedFloats kernelColumns = kernelSpectrum(transform, rotated);
    vel::AlignedFloats spectrum = spectrumOf(transform, plane);
    forEachBlock(transform, spectrum, kernelColumns,
                 [&](int block, float* columns, const float* kernelBlock) {
                     vel::multiplyByConjugate(fft, block, columns, kernelBlock, columns);
                     fft.inverseColumns(columns, block);
                 });
    Plane result(transform.side(), transform.side());
    transform.inverseRows(spectrum.data(), 0, transform.side() - 1, result);
    return result;
}

} // namespace restoration
