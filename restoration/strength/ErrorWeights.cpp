#include "restoration/strength/ErrorWeights.h"

#include "restoration/deconvolution/tileTransforms.h"
#include "restoration/strength/fitRows.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;

float gainOf(float power) noexcept {
    constexpr float kLeastPower = 0.03f;
    return 1.0f / (power + kLeastPower);
}

std::size_t floatsOfBlock(const vel::RealFft2D& fft) noexcept {
    return kRowFloats * static_cast<std::size_t>(fft.height());
}

} // namespace

ErrorWeights::ErrorWeights(const BlurSpectrum& blur) : m_fft(blur.fft()) {
    m_gains.resize(m_fft.spectrumFloats());
    std::fill_n(m_gains.data(), m_gains.size(), 0.0f);
    for (int block = 0; block < m_fft.blockCount(); ++block) {
        const float* k = blur.spectrum() + blur.offsetOf(block);
        float* gains = m_gains.data() + blur.offsetOf(block);
        for (std::size_t row = 0; row < floatsOfBlock(m_fft); row += kRowFloats) {
            for (std::size_t re = row; re < row + kLanes; ++re) {
                const std::size_t im = re + kLanes;
                gains[re] = gains[im] = gainOf(k[re] * k[re] + k[im] * k[im]);
            }
        }
    }
    // The real frequencies share slots in pairs.
    for (const std::size_t slot : vel::realSlots(m_fft)) {
        const float k = blur.spectrum()[slot];
        m_gains.data()[slot] = gainOf(k * k);
    }
}

void ErrorWeights::apply(const Plane& errors, Plane& weighted, TileScratch& scratch,
                         const Cancellation& cancellation) const {
    float* rowMemory = scratch.rowMemory(m_fft);
    float* spectrum = scratch.spectrum(m_fft, 0);
    forwardRows(m_fft, errors, spectrum, rowMemory, cancellation);
    forEachBlock(m_fft, cancellation, [&](int block, std::size_t offset) {
        m_fft.forwardColumns(spectrum + offset, block);
        multiplyRow(m_gains.data() + offset, spectrum + offset, floatsOfBlock(m_fft));
        m_fft.inverseColumns(spectrum + offset, block);
    });
    inverseRows(m_fft, spectrum, weighted, rowMemory, cancellation);
}

} // namespace restoration
