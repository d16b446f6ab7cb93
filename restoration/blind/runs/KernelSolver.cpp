#include "restoration/blind/runs/KernelSolver.h"

#include "restoration/blind/spectra/spectrumRows.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace restoration {
namespace {

constexpr int kSteps = 60;
/// Weights of the summed squares of the kernel and of its differences, in units of A(0).
constexpr double kRidge = 2e-3;
constexpr double kSmoothness = 5e-3;
constexpr std::size_t kLanes = vel::RealFft2D::kLanes;
constexpr std::size_t kRowFloats = vel::RealFft2D::kRowFloats;

void project(const KernelReach& reach, SquareKernel& kernel) {
    const int radius = kernel.radius();
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            const bool isInside =
                std::abs(y - radius) <= reach.rows && std::abs(x - radius) <= reach.columns;
            double& value = kernel.at(y, x);
            value = isInside ? std::max(value, 0.0) : 0.0;
        }
    }
}

/// Whether the last move goes against the gradient at the extrapolated place.
bool overshoots(const SquareKernel& extrapolated, const SquareKernel& next,
                const SquareKernel& last) {
    double sum = 0.0;
    for (std::size_t i = 0; i < next.values.size(); ++i) {
        sum += (extrapolated.values[i] - next.values[i]) * (next.values[i] - last.values[i]);
    }
    return sum > 0.0;
}

/// next + momentum (next - last)
SquareKernel extrapolated(const SquareKernel& next, const SquareKernel& last, double momentum) {
    SquareKernel result = next;
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        result.values[i] += momentum * (next.values[i] - last.values[i]);
    }
    return result;
}

} // namespace

KernelSolver::KernelSolver(int radius, const Cancellation& cancellation)
    : m_transform(std::max(powerOfTwoFrom(4 * radius + 1), 32), cancellation),
      m_plane(m_transform.side(), m_transform.side()) {
    m_spectrum.resize(m_transform.fft().spectrumFloats());
    m_symbol.resize(m_transform.fft().spectrumFloats());
}

void KernelSolver::improve(const KernelSystem& system, const KernelReach& reach, double sparsity,
                           SquareKernel& kernel) {
    setSystem(system);
    const double price = sparsity * *std::ranges::max_element(system.correlation);
    const double ridge = kRidge * system.energy();
    const double step = 1.0 / (m_largest + ridge);
    SquareKernel place = kernel;
    double weight = 1.0;
    for (int i = 0; i < kSteps; ++i) {
        multiply(place);
        SquareKernel next = place;
        for (int y = 0; y < kernel.side; ++y) {
            for (int x = 0; x < kernel.side; ++x) {
                const double product =
                    static_cast<double>(m_plane.row(y)[x]) + ridge * place.at(y, x);
                const auto index = static_cast<std::size_t>(y * kernel.side + x);
                next.values[index] -= step * (product - system.correlation[index] + price);
            }
        }
        project(reach, next);
        const double nextWeight = (1.0 + std::sqrt(1.0 + 4.0 * weight * weight)) / 2.0;
        if (overshoots(place, next, kernel)) {
            place = next;
            weight = 1.0;
        } else {
            place = extrapolated(next, kernel, (weight - 1.0) / nextWeight);
            weight = nextWeight;
        }
        kernel = std::move(next);
    }
}

void KernelSolver::setSystem(const KernelSystem& system) {
    SquareKernel lags(4 * system.radius + 1);
    lags.values = system.autocorrelation;
    const int middle = lags.radius();
    const double smoothness = kSmoothness * system.energy();
    lags.at(middle, middle) += 4.0 * smoothness;
    for (const int d : {-1, 1}) {
        lags.at(middle + d, middle) -= smoothness;
        lags.at(middle, middle + d) -= smoothness;
    }
    placeCyclically(lags, m_plane);
    m_transform.forward(m_plane, m_symbol.data());

    // The lags are symmetric, therefore the spectrum is real: its real parts scale both parts of
    // the spectrum of a kernel. The slots of real frequencies hold two values that are real.
    const std::array<std::size_t, 4> slots = vel::realSlots(m_transform.fft());
    std::array<float, 4> real{};
    std::ranges::transform(slots, real.begin(),
                           [&](std::size_t slot) { return m_symbol.data()[slot]; });
    float largest = 0.0f;
    const auto lanes =
        static_cast<std::size_t>(std::min(m_transform.side() / 2, static_cast<int>(kLanes)));
    m_transform.forEachBlock(m_symbol.data(), [&](int, float* columns) {
        for (std::size_t row = 0; row < static_cast<std::size_t>(m_transform.side()); ++row) {
            float* values = columns + row * kRowFloats;
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                values[lane + kLanes] = values[lane];
                largest = std::max(largest, std::abs(values[lane]));
            }
        }
    });
    for (std::size_t k = 0; k < slots.size(); ++k) {
        m_symbol.data()[slots[k]] = real[k];
        largest = std::max(largest, std::abs(real[k]));
    }
    m_largest = static_cast<double>(largest);
}

void KernelSolver::multiply(const SquareKernel& kernel) {
    for (int y = 0; y < kernel.side; ++y) {
        float* row = m_plane.row(y);
        for (int x = 0; x < kernel.side; ++x) {
            row[x] = static_cast<float>(kernel.at(y, x));
        }
        std::fill(row + kernel.side, row + m_plane.width(), 0.0f);
    }
    for (int y = kernel.side; y < m_plane.height() && y % static_cast<int>(kLanes) != 0; ++y) {
        std::fill(m_plane.row(y), m_plane.row(y) + m_plane.width(), 0.0f);
    }
    m_transform.forward(m_plane, kernel.side, m_spectrum.data());
    const vel::RealFft2D& fft = m_transform.fft();
    m_transform.forEachBlock(m_spectrum.data(), [&](int block, float* columns) {
        multiplyBy(columns, m_symbol.data() + (columns - m_spectrum.data()),
                   static_cast<std::size_t>(m_transform.side()) * kRowFloats);
        fft.inverseColumns(columns, block);
    });
    m_transform.inverseRows(m_spectrum.data(), 0, kernel.side - 1, m_plane);
}

} // namespace restoration
