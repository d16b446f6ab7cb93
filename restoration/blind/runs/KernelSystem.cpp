#include "restoration/blind/runs/KernelSystem.h"

#include "restoration/blind/spectra/spectrumRows.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace restoration {
namespace {

constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;

/// Replaces squared real parts and squared imaginary parts by the squared magnitude, which is real.
/// The slots of real frequencies hold one square each and stay.
void joinSquares(const vel::RealFft2D& fft, int blockIndex, float* block) {
    const std::array<std::size_t, 4> slots = vel::realSlots(fft);
    std::array<float, 4> kept{};
    std::ranges::transform(slots, kept.begin(), [&](std::size_t slot) { return block[slot]; });
    for (std::size_t row = 0; row < static_cast<std::size_t>(fft.height()); ++row) {
        float* re = block + row * kRowFloats;
        float* im = re + kLanes;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            re[lane] += im[lane];
            im[lane] = 0.0f;
        }
    }
    for (std::size_t k = 0; blockIndex == 0 && k < slots.size(); ++k) {
        block[slots[k]] = kept[k];
    }
}

} // namespace

KernelSystems::KernelSystems(SquareTransform& transform)
    : m_transform(transform), m_plane(transform.side(), transform.side()) {
    m_first.resize(transform.fft().spectrumFloats());
    m_second.resize(transform.fft().spectrumFloats());
}

KernelSystem KernelSystems::of(LatentGradients& gradients, int radius) {
    const vel::RealFft2D& fft = m_transform.fft();
    KernelSystem system{radius, {}, {}};
    m_transform.forward(gradients.right(), m_first.data());
    m_transform.forward(gradients.down(), m_second.data());
    m_transform.forEachBlock(m_first.data(), [&](int block, float* columns) {
        const std::size_t count = static_cast<std::size_t>(fft.height()) * kRowFloats;
        sumOfSquares(columns, m_second.data() + (columns - m_first.data()), count);
        joinSquares(fft, block, columns);
    });
    system.autocorrelation = lags(m_first, 2 * radius);

    // conj(Gx) Dx Y + conj(Gy) Dy Y = Y conj(Gx conj(Dx) + Gy conj(Dy)): the divergence of the
    // gradients, correlated with the picture.
    gradients.transformDivergence(m_second.data());
    m_transform.forEachBlock(m_second.data(), [&](int block, float* columns) {
        const float* picture = gradients.pictureSpectrum() + (columns - m_second.data());
        vel::multiplyByConjugate(fft, block, picture, columns,
                                 m_first.data() + (columns - m_second.data()));
    });
    system.correlation = lags(m_first, radius);
    return system;
}

std::vector<double> KernelSystems::lags(vel::AlignedFloats& spectrum, int reach) {
    const vel::RealFft2D& fft = m_transform.fft();
    m_transform.forEachBlock(
        spectrum.data(), [&](int block, float* columns) { fft.inverseColumns(columns, block); });
    const int side = m_transform.side();
    m_transform.inverseRows(spectrum.data(), 0, reach, m_plane);
    m_transform.inverseRows(spectrum.data(), side - reach, side - 1, m_plane);
    std::vector<double> cropped;
    for (int y = -reach; y <= reach; ++y) {
        const float* row = m_plane.row((y + side) % side);
        for (int x = -reach; x <= reach; ++x) {
            cropped.push_back(static_cast<double>(row[(x + side) % side]));
        }
    }
    return cropped;
}

} // namespace restoration
