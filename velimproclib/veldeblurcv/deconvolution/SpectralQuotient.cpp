#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

constexpr std::size_t kLanes = RealFft2D::kLanes;
constexpr std::size_t kRowFloats = RealFft2D::kRowFloats;

void multiplyByConjugateRows(const float* a, const float* b, float* product, std::size_t rows) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::CappedTag<float, kLanes> d;
    const std::size_t step = hn::Lanes(d);
    for (std::size_t i = 0; i < rows * kRowFloats; i += kRowFloats) {
        for (std::size_t lane = i; lane < i + kLanes; lane += step) {
            const auto aRe = hn::Load(d, a + lane);
            const auto aIm = hn::Load(d, a + lane + kLanes);
            const auto bRe = hn::Load(d, b + lane);
            const auto bIm = hn::Load(d, b + lane + kLanes);
            hn::Store(hn::Add(hn::Mul(aRe, bRe), hn::Mul(aIm, bIm)), d, product + lane);
            hn::Store(hn::Sub(hn::Mul(aIm, bRe), hn::Mul(aRe, bIm)), d, product + lane + kLanes);
        }
    }
}

void squaredMagnitudeRows(const float* HWY_RESTRICT spectrum, float* HWY_RESTRICT power,
                          std::size_t rows) {
    for (std::size_t row = 0; row < rows; ++row) {
        const float* re = spectrum + row * kRowFloats;
        const float* im = re + kLanes;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float magnitude = std::sqrt(re[lane] * re[lane] + im[lane] * im[lane]);
            power[row * kLanes + lane] = magnitude * magnitude;
        }
    }
}

/// x = (numerator + gamma x) / (denomKernel + gamma (columnPower + rowPower)): `columnPower` has
/// one element per lane, `rowPower` one per row.
void divideRows(const float* denomKernel, const float* columnPower, const float* rowPower,
                const float* numerator, float gamma, float* x, std::size_t rows) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::CappedTag<float, kLanes> d;
    const std::size_t step = hn::Lanes(d);
    const auto g = hn::Set(d, gamma);
    for (std::size_t row = 0; row < rows; ++row) {
        const auto vertical = hn::Set(d, rowPower[row]);
        const float* n = numerator + row * kRowFloats;
        float* out = x + row * kRowFloats;
        for (std::size_t lane = 0; lane < kLanes; lane += step) {
            const auto gradient = hn::Add(hn::Load(d, columnPower + lane), vertical);
            const auto kernel = hn::Load(d, denomKernel + row * kLanes + lane);
            const auto denominator = hn::Add(kernel, hn::Mul(g, gradient));
            const auto re = hn::Add(hn::Load(d, n + lane), hn::Mul(g, hn::Load(d, out + lane)));
            const auto im = hn::Add(hn::Load(d, n + lane + kLanes),
                                    hn::Mul(g, hn::Load(d, out + lane + kLanes)));
            hn::Store(hn::Div(re, denominator), d, out + lane);
            hn::Store(hn::Div(im, denominator), d, out + lane + kLanes);
        }
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {
namespace {

/// |D|^2 of the forward difference on a circle of `side` samples.
std::vector<float> differencePower(int side) {
    std::vector<float> power(static_cast<std::size_t>(side));
    for (int k = 0; k < side; ++k) {
        const double angle = std::numbers::pi * std::min(k, side - k) / side;
        const auto magnitude = static_cast<float>(2 * std::sin(angle));
        power[static_cast<std::size_t>(k)] = magnitude * magnitude;
    }
    return power;
}

std::array<float, 4> gather(const std::array<std::size_t, 4>& slots, const float* block) noexcept {
    return {block[slots[0]], block[slots[1]], block[slots[2]], block[slots[3]]};
}

} // namespace

HWY_EXPORT(multiplyByConjugateRows);
HWY_EXPORT(squaredMagnitudeRows);
HWY_EXPORT(divideRows);

std::array<std::size_t, 4> realSlots(const RealFft2D& fft) noexcept {
    const auto middle = fft.rowOf(fft.height() / 2) * RealFft2D::kRowFloats;
    return {0, RealFft2D::kLanes, middle, middle + RealFft2D::kLanes};
}

void multiplyByConjugate(const RealFft2D& fft, int blockIndex, const float* a, const float* b,
                         float* product) noexcept {
    const auto rows = static_cast<std::size_t>(fft.height());
    if (blockIndex > 0) {
        HWY_DYNAMIC_DISPATCH(multiplyByConjugateRows)(a, b, product, rows);
        return;
    }
    const std::array<std::size_t, 4> slots = realSlots(fft);
    const std::array<float, 4> realA = gather(slots, a);
    HWY_DYNAMIC_DISPATCH(multiplyByConjugateRows)(a, b, product, rows);
    for (std::size_t k = 0; k < slots.size(); ++k) {
        product[slots[k]] = realA[k] * b[slots[k]];
    }
}

void SpectralQuotient::setKernel(const RealFft2D& fft, const float* kernelSpectrum) {
    m_side = fft.height();
    m_realSlots = realSlots(fft);
    storeDifferences(fft);
    storeMagnitudes(fft, kernelSpectrum);
}

void SpectralQuotient::storeDifferences(const RealFft2D& fft) {
    m_denomGrad = differencePower(m_side);
    m_rowFrequencies.clear();
    m_rowDenomGrad.clear();
    for (int row = 0; row < m_side; ++row) {
        const int frequency = fft.frequencyOf(row);
        m_rowFrequencies.push_back(frequency);
        m_rowDenomGrad.push_back(m_denomGrad[static_cast<std::size_t>(frequency)]);
    }
    const float zero = m_denomGrad[0];
    const float half = m_denomGrad[static_cast<std::size_t>(m_side / 2)];
    m_realDenomGrad = {zero + zero, half + zero, zero + half, half + half};
}

void SpectralQuotient::storeMagnitudes(const RealFft2D& fft, const float* kernelSpectrum) {
    const auto rows = static_cast<std::size_t>(m_side);
    const auto blocks = static_cast<std::size_t>(fft.blockCount());
    m_denomKernel.resize(blocks * rows * kLanes);
    for (std::size_t block = 0; block < blocks; ++block) {
        HWY_DYNAMIC_DISPATCH(squaredMagnitudeRows)
        (kernelSpectrum + block * fft.blockFloats(), m_denomKernel.data() + block * rows * kLanes,
         rows);
    }
    for (std::size_t k = 0; k < m_realSlots.size(); ++k) {
        const float value = kernelSpectrum[m_realSlots[k]];
        m_realDenomKernel[k] = value * value;
    }
}

void SpectralQuotient::divide(int blockIndex, const float* numerator, float gamma,
                              float* x) const noexcept {
    const auto rows = static_cast<std::size_t>(m_side);
    const auto block = static_cast<std::size_t>(blockIndex);
    const float* denomKernel = m_denomKernel.data() + block * rows * kLanes;
    using ColumnPowers = std::array<float, kLanes>;
    alignas(64) ColumnPowers columns;
    std::copy_n(m_denomGrad.data() + block * kLanes, kLanes, columns.data());
    const auto divideRange = [&](const ColumnPowers& powers, std::size_t from, std::size_t to) {
        HWY_DYNAMIC_DISPATCH(divideRows)
        (denomKernel + from * kLanes, powers.data(), m_rowDenomGrad.data() + from,
         numerator + from * RealFft2D::kRowFloats, gamma, x + from * RealFft2D::kRowFloats,
         to - from);
    };
    if (blockIndex > 0) {
        divideRange(columns, 0, rows);
        return;
    }
    const std::array<float, 4> real = gather(m_realSlots, x);
    // The first lane holds column 0 up to the middle frequency and column n/2 above it.
    alignas(64) ColumnPowers aboveMiddle = columns;
    aboveMiddle[0] = m_denomGrad[rows / 2];
    for (std::size_t row = 0; row < rows; ++row) {
        divideRange(m_rowFrequencies[row] > m_side / 2 ? aboveMiddle : columns, row, row + 1);
    }
    for (std::size_t k = 0; k < real.size(); ++k) {
        const float denominator = m_realDenomKernel[k] + gamma * m_realDenomGrad[k];
        x[m_realSlots[k]] = (numerator[m_realSlots[k]] + gamma * real[k]) / denominator;
    }
}

} // namespace vel
#endif
