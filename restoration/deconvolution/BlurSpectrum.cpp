#include "restoration/deconvolution/BlurSpectrum.h"

#include "restoration/deconvolution/spectralRows.h"
#include "restoration/planes/Plane.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace restoration {
namespace {

constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;

int orderOf(int side) {
    return std::bit_width(static_cast<unsigned>(side)) - 1;
}

int wrapped(int position, int side) {
    const int remainder = position % side;
    return remainder < 0 ? remainder + side : remainder;
}

/// A plane of zeros with the kernel's centre at (0, 0); what lies above or left of the centre wraps
/// to the far ends.
Plane placed(const Kernel& kernel, int side) {
    Plane plane(side, side);
    std::ranges::fill(plane.values(), 0.0f);
    for (int y = 0; y < kernel.height; ++y) {
        float* row = plane.row(wrapped(y - kernel.height / 2, side));
        for (int x = 0; x < kernel.width; ++x) {
            row[wrapped(x - kernel.width / 2, side)] += kernel.at(y, x);
        }
    }
    return plane;
}

/// |D|^2 of the forward difference on a circle of `side` pixels.
std::vector<float> differencePower(int side) {
    std::vector<float> power;
    for (int k = 0; k < side; ++k) {
        const double magnitude = 2 * std::sin(std::numbers::pi * std::min(k, side - k) / side);
        power.push_back(static_cast<float>(magnitude * magnitude));
    }
    return power;
}

} // namespace

BlurSpectrum::BlurSpectrum(const Kernel& kernel, int side)
    : m_kernelSide(kernel.largerSide()), m_fft(orderOf(side), orderOf(side)),
      m_differencePower(differencePower(side)), m_realSlots(vel::realSlots(m_fft)) {
    transform(kernel);
    m_quotient.setKernel(m_fft, m_spectrum.data());
    storePowers();
}

void BlurSpectrum::transform(const Kernel& kernel) {
    const Plane plane = placed(kernel, side());
    const auto rowBytes = static_cast<std::ptrdiff_t>(sizeof(float)) * side();
    vel::AlignedFloats scratch;
    scratch.resize(m_fft.scratchFloats());
    m_spectrum.resize(m_fft.spectrumFloats());
    for (int group = 0; group < m_fft.groupCount(); ++group) {
        m_fft.forwardRows(plane.row(0), rowBytes, group, m_spectrum.data(), scratch.data());
    }
    for (int block = 0; block < m_fft.blockCount(); ++block) {
        m_fft.forwardColumns(m_spectrum.data() + offsetOf(block), block);
    }
}

void BlurSpectrum::storePowers() {
    const std::size_t rows = m_spectrum.size() / kRowFloats;
    m_power.resize(rows * kLanes);
    for (std::size_t row = 0; row < rows; ++row) {
        const float* re = m_spectrum.data() + row * kRowFloats;
        const float* im = re + kLanes;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            m_power.data()[row * kLanes + lane] = re[lane] * re[lane] + im[lane] * im[lane];
        }
    }
    for (int row = 0; row < side(); ++row) {
        m_rowPower.push_back(m_differencePower[static_cast<std::size_t>(m_fft.frequencyOf(row))]);
    }
    const float zero = m_differencePower.front();
    const float half = m_differencePower[static_cast<std::size_t>(side() / 2)];
    m_realDifference = {zero + zero, half + zero, zero + half, half + half};
    for (std::size_t k = 0; k < m_realSlots.size(); ++k) {
        const float value = m_spectrum.data()[m_realSlots[k]];
        m_realPower[k] = value * value;
    }
}

void BlurSpectrum::blur(int block, const float* x, float* product) const noexcept {
    const float* k = spectrum() + offsetOf(block);
    std::array<float, 4> real{};
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        real[i] = x[m_realSlots[i]] * k[m_realSlots[i]];
    }
    multiplySpectra(x, k, product, static_cast<std::size_t>(side()));
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        product[m_realSlots[i]] = real[i];
    }
}

void BlurSpectrum::correlate(int block, const float* y, float* product) const noexcept {
    vel::multiplyByConjugate(m_fft, block, y, spectrum() + offsetOf(block), product);
}

/// rows(first, count, columnPowers): all rows of a block whose columns have these powers |Dx|^2.
template <class Rows>
void BlurSpectrum::forEachRowRange(int block, const Rows& rows) const noexcept {
    alignas(64) ColumnPowers columns;
    std::copy_n(m_differencePower.data() + static_cast<std::size_t>(block) * kLanes, kLanes,
                columns.data());
    const auto count = static_cast<std::size_t>(side());
    if (block > 0) {
        rows(std::size_t{0}, count, columns.data());
        return;
    }
    // The first lane holds column 0 up to the middle frequency and column side/2 above it.
    alignas(64) ColumnPowers aboveMiddle = columns;
    aboveMiddle[0] = m_differencePower[count / 2];
    for (std::size_t row = 0; row < count; ++row) {
        const bool isAbove = m_fft.frequencyOf(static_cast<int>(row)) > side() / 2;
        rows(row, std::size_t{1}, isAbove ? aboveMiddle.data() : columns.data());
    }
}

void BlurSpectrum::reblur(int block, float weight, float* x) const noexcept {
    std::array<float, 4> real{};
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        const float denominator = m_realPower[i] + weight * m_realDifference[i];
        real[i] = x[m_realSlots[i]] * (m_realPower[i] / denominator);
    }
    const float* power = m_power.data() + offsetOf(block) / 2;
    forEachRowRange(block, [&](std::size_t first, std::size_t count, const float* columnPower) {
        reblurRows({power + first * kLanes, columnPower, m_rowPower.data() + first, weight},
                   x + first * kRowFloats, count);
    });
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        x[m_realSlots[i]] = real[i];
    }
}

void BlurSpectrum::deconvolve(int block, float weight, const float* mean, float* y) const noexcept {
    correlate(block, y, y);
    std::array<float, 4> real{};
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        const float prior = weight * m_realDifference[i];
        const float drawn = mean == nullptr ? 0.0f : prior * mean[m_realSlots[i]];
        real[i] = (y[m_realSlots[i]] + drawn) / (m_realPower[i] + prior);
    }
    const float* power = m_power.data() + offsetOf(block) / 2;
    forEachRowRange(block, [&](std::size_t first, std::size_t count, const float* columnPower) {
        const Denominator denominator{power + first * kLanes, columnPower,
                                      m_rowPower.data() + first, weight};
        float* rows = y + first * kRowFloats;
        if (mean == nullptr) {
            divideRows(denominator, rows, count);
        } else {
            divideTowardsMean(denominator, mean + first * kRowFloats, rows, count);
        }
    });
    for (std::size_t i = 0; block == 0 && i < real.size(); ++i) {
        y[m_realSlots[i]] = real[i];
    }
}

} // namespace restoration
